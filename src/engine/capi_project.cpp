// Exported setters of the project record and the loads on the cap, and the two small
// exports that stand beside them (version, test line).
#include "engine/capi_guard.h"
#include "engine/log_echo.h"
#include "engine/utilities.h"
#include "quellon.h"

using namespace quellon;

extern "C" {

int QuellonSetProjectName(const char* text, int count) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectName...");
    StoreText(e.project.Name, text, count);
    EchoValues(e, "Project name = " + std::string(e.project.Name.trimmed()));
    return 1;
  });
}

int QuellonSetProjectDescription(const char* text, int count) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectDescription...");
    StoreText(e.project.Description, text, count);
    EchoValues(e, "Project description = " + std::string(e.project.Description.trimmed()));
    return 1;
  });
}

int QuellonSetProjectDate(int year, int month, int day) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectDate...");
    e.project.Year = year;
    e.project.Month = month;
    e.project.Day = day;
    EchoValues(e, "Date = " + Int(day) + "/" + Int(month) + "/" + Int(year));
    return 1;
  });
}

int QuellonSetProjectFlags(const int* flags, int count) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectFlags...");
    // The first count entries, at most 40; the flags beyond keep their values. The
    // solver choice follows flag 16 even when no entry is taken.
    const int taken = flags == nullptr ? 0 : (count > kFlagCount ? kFlagCount : count);
    for (int i = 1; i <= taken; ++i) e.project.Flags(i) = flags[i - 1] != 0 ? 1 : 0;
    e.project.DynamicModel = e.project.Flags(16);
    if (LogOpen(e)) {
      std::string letters;
      for (int i = 1; i <= kFlagCount; ++i) letters += Letter(e.project.Flags(i));
      EchoValues(e, "Project flags = " + letters);
    }
    return 1;
  });
}

int QuellonSetProjectFilename(const char* text, int count) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectFilename...");
    StoreText(e.project.Filename, text, count);
    EchoValues(e, "Project filename = " + std::string(e.project.Filename.trimmed()));
    return 1;
  });
}

int QuellonSetProjectElasticUnloadingFlag(quellon_bool on) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectElasticUnloadingFlag...");
    e.project.ElasticUnloading = FromHostBool(on);
    EchoValues(e, std::string("Elastic unloading flag = ") + Letter(e.project.ElasticUnloading));
    return 1;
  });
}

int QuellonSetProjectHyperbolicFactors(double rs, double rb, double rl, double rt) {
  return ModelSetter([&](Engine& e) {
    Project& p = e.project;
    EchoName(e, "SetProjectHyperbolicFactors...");
    p.Rs = Narrow(rs);
    p.Rb = Narrow(rb);
    p.Rl = Narrow(rl);
    p.Rt = Narrow(rt);
    EchoValues(e, "Hyperbolic factors, Rs = " + Fix(p.Rs, 2) + ", Rb = " + Fix(p.Rb, 2) + ", Rl = " + Fix(p.Rl, 2) +
                      ", Rt = " + Fix(p.Rt, 2));
    return 1;
  });
}

int QuellonSetProjectNq(quellon_bool automatic, double nq) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectNq...");
    e.project.AutoNq = FromHostBool(automatic);
    e.project.Nq = Narrow(nq);
    EchoValues(e, std::string("Auto Nq = ") + Letter(e.project.AutoNq) + ", Nq = " + Fix(e.project.Nq, 2));
    return 1;
  });
}

int QuellonSetProjectLimitingShaftFriction(double kpa) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectLimitingShaftFriction...");
    e.project.LimitingShaftFriction = Narrow(kpa);
    EchoValues(e, "Limiting shaft friction = " + Fix(e.project.LimitingShaftFriction, 2));
    return 1;
  });
}

int QuellonSetProjectLimitingBearingPressure(double kpa) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectLimitingBearingPressure...");
    e.project.LimitingBearingPressure = Narrow(kpa);
    EchoValues(e, "Limiting bearing pressure = " + Fix(e.project.LimitingBearingPressure, 2));
    return 1;
  });
}

int QuellonSetProjectExcludeTMKComments(quellon_bool exclude) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetProjectExcludeTMKComments...");
    e.project.ExcludeTMKComments = FromHostBool(exclude);
    EchoValues(e, std::string("Exclude TMK comments flag = ") + Letter(e.project.ExcludeTMKComments));
    return 1;
  });
}

int QuellonSetNumberOfLoadIncrements(int n) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetNumberOfLoadIncrements...");
    e.actions.NumberOfIncrements = n;
    e.project.NonLinear = n > 1 ? 1 : 0;
    EchoValues(e, "Number of increments = " + Int(n));
    return 1;
  });
}

int QuellonSetActions(double fx, double fy, double fz, double mx, double my, double mz, double x, double y) {
  return ModelSetter([&](Engine& e) {
    EchoName(e, "SetActions...");
    StoreCapLoads(e, e.actions, fx, fy, fz, mx, my, mz, x, y);
    return 1;
  });
}

int QuellonGetVersion(void) { return kVersionNumber; }

void QuellonTest(void) {
  Guarded([] { LogLine(TheEngine(), "Ran the test!"); });
}

}  // extern "C"
