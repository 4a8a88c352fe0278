#include "engine/run_analysis.h"

#include <cstdio>
#include <new>
#include <string>

#include "engine/deferred_closes.h"
#include "engine/engine.h"
#include "engine/file_units.h"
#include "engine/model_checks.h"
#include "engine/model_tables.h"
#include "engine/notify.h"
#include "engine/result_checks.h"
#include "engine/workspace.h"
#include "files/number_forms.h"
#include "files/reports.h"
#include "soil/soil.h"
#include "solution/group_stiffness.h"
#include "solution/load_cases.h"
#include "solution/soil_softening.h"
#include "solution/solution.h"

namespace quellon {

namespace {

// String table id posted when the increments are over.
constexpr int kFinalIncrementCompleted = 17;

// Marks the engine busy for the length of a run, whichever way the run ends, so that a
// host calling back into the engine can't change the model under it.
class RunningScope {
 public:
  explicit RunningScope(Engine& e) : e_(e) { e_.running = true; }
  ~RunningScope() { e_.running = false; }
  RunningScope(const RunningScope&) = delete;
  RunningScope& operator=(const RunningScope&) = delete;

 private:
  Engine& e_;
};

// kFail: a result that is not a number; the run ends as a failure, in order.
enum class IncrementEnd { kNext, kStop, kAbandon, kFail };

}  // namespace

void StopAtCapacity(Engine& e, int i) {
  const int P = e.foundation.NumberOfPiles;
  const int rows = LayoutOf(e).AxialRows();
  LogLine(e, "Axial elements yielded = " + FormatInt(e.ws.YieldCountAxial) + "/" + FormatInt(rows));
  WriteXMLCapacityStop(e);
  WriteTXTCapacityStop(e, i);
  SendError(e, "Ultimate axial capacity of single pile exceeded after increment " + FormatInt(i));
  // 259 "Ultimate axial capacity of pile exceeded", 260 "... of pile group exceeded".
  e.project.ErrorCode = P == 1 ? 259 : 260;
}

namespace {

// One load increment. solve_result receives the result of Solve, which the run returns
// if it is abandoned.
IncrementEnd RunIncrement(Engine& e, int i, int& solve_result) {
  NotifyCreateIncrement(e, i);
  SwitchPhase(e.timer, Phase::kReports);
  PrintIncrementHead(e, i);
  // A failed solve has told the host already; the increment goes on with the
  // tractions in hand.
  SwitchPhase(e.timer, Phase::kSolve);
  solve_result = Solve(e, i);
  SwitchPhase(e.timer, Phase::kResults);
  if (CheckTractions(e, i) == 0) return IncrementEnd::kFail;
  PrintSolveVectors(e);
  SplitTractions(e);
  PrintUnitStresses(e);
  CalcHeadLoads(e, i);
  PrintUnitHeadLoads(e);

  // The group's stiffness to the host and the reports; its inverse, the flexibility,
  // gives the cap movement, spread back over every pile and element.
  Workspace& w = e.ws;
  const GroupLayout g = LayoutOf(e);
  RealVector packed;
  if (!Create1DRealMatrix(e, packed, g.N)) return IncrementEnd::kAbandon;
  float k[36];
  AssembleGroupStiffness(e.foundation, w, k);
  float grmat[36];
  GroupStiffnessExternal(k, grmat);
  NotifyStiffnesses(e, i, grmat);
  WriteGroupStiffness(e, k);
  if (!InvertMatrix(k, 6, 6)) {
    e.project.ErrorCode = 258;  // "Error inverting soil stiffness matrix"
    return IncrementEnd::kAbandon;
  }
  WriteGroupFlexibility(e, k);
  SpreadCapMovement(e.foundation, g, k, w, packed);
  // The softening after this increment reads only its stresses: decided now, it lets the
  // pass over G that forms the soil movements form the next system too. It takes effect
  // below, in its place among the totals and reports.
  SoilUpdate next;
  if (e.project.NonLinear && DecideSoilUpdate(e, i, false, next))
    next.system_needed = i < e.actions.NumberOfIncrements || ReportShowsSystemMatrix(e);
  FormSoilMovements(e, packed, &next);
  packed.release();
  if (CheckIncrementResults(e, i) == 0) return IncrementEnd::kFail;
  SplitSoilDisplacements(g, w);
  PrintIncrementalDisplacements(e);

  // The totals; in a non-linear run the state of the next increment, from the stresses
  // and limits of this one: yield lags one increment behind the load.
  AddMovementsToTotals(g, i, w);
  if (e.project.NonLinear) {
    {
      PhaseScope softening(e.timer, Phase::kSoftening);
      UpdateSoilFlexibility(e, i, &next);
    }
    PhaseScope reports(e.timer, Phase::kReports);
    if (ReportShowsSystemMatrix(e)) FormUnchangedSystem(w);
    PrintNonLinearMatrices(e, i);
  }
  AddLoadsToTotals(e.foundation, g, w);

  // Reports of the increment; the writers apply their own flags and cut-offs. The host
  // receives the cap's values once they stand in the XML.
  {
    PhaseScope reports(e.timer, Phase::kReports);
    if (WriteXMLPileCap(e)) NotifyPileCap(e, i);
    WriteXMLPiles(e, i);
    WriteTXTIncrementResults(e, i);
  }

  // The run ends when every axial unknown of the group has yielded; this increment then
  // isn't counted.
  if (AxialCapacityUsedUp(g, w)) {
    StopAtCapacity(e, i);
    return IncrementEnd::kStop;
  }
  SendCounter(e, i);
  SwitchPhase(e.timer, Phase::kOther);
  const std::string line = "Increment " + FormatInt(i) + "\n";
  std::fputs(line.c_str(), stdout);
  std::fflush(stdout);
  return IncrementEnd::kNext;
}

// A run that fails once its XML document is begun closes the document first, so that
// what was written stays well-formed.
int FailWithDocumentClosed(Engine& e) {
  WriteXMLOutputEnd(e);
  return 0;
}

// From the workspace to the end of the increments. Returns 1 when the increments ended
// in order, 0 when the run could not start them; abandoned tells the caller to leave at
// once with the returned value, which is then the last result of Solve.
int Calculate(Engine& e, bool& abandoned) {
  abandoned = false;
  SwitchPhase(e.timer, Phase::kWorkspace);
  if (CreateWorkspace(e) == 0) return 0;
  SwitchPhase(e.timer, Phase::kGeometry);
  PrepareGroupGeometry(e);
  // A model whose numerics would be undefined is refused before anything is assembled.
  if (CheckModel(e) == 0) return 0;
  // Two piles whose load points coincide would make the soil matrices divide by zero:
  // such a model is refused before anything is assembled.
  if (CheckCoincidentMidpoints(e) == 0) return 0;
  // Load cases that the run can't work, or whose document can't be made, refuse it.
  if (PrepareLoadCases(e) == 0) return 0;
  SwitchPhase(e.timer, Phase::kReports);
  WriteTXTInput(e);
  SwitchPhase(e.timer, Phase::kGeometry);
  PileStiffnessesAllPiles(e);
  // Without its modulus table the soil assembly would read an array that isn't there:
  // the run ends as a failure rather than go on.
  if (YamashitaVerticalStiffnessAverageAllPiles(e) == 0) return 0;
  SwitchPhase(e.timer, Phase::kReports);
  WriteXMLHeader(e);
  WriteXMLInput(e);
  WriteXMLOutputStart(e);
  if (e.project.NonLinear != 0) {
    SwitchPhase(e.timer, Phase::kGeometry);
    LimitingStressesAllPiles(e);
    if (CheckLimitingStresses(e) == 0) return FailWithDocumentClosed(e);
    if (e.project.Flag(18)) PrintLimitingStresses(e);
  }

  SendInfo(e, "Assembling flexibility matrices...");
  const int piles = e.foundation.NumberOfPiles;
  for (int p = 1; p <= piles; ++p) {
    AssembleSoilFlexibility(e, p);
    if (CheckSoilFlexibilityRows(e, p) == 0) return FailWithDocumentClosed(e);
    SwitchPhase(e.timer, Phase::kReports);
    if (e.project.Flag(3)) WriteSinglePileMatrix(e, p);
    SwitchPhase(e.timer, Phase::kPileAndBCV);
    AssemblePileFlexibility(e, p);
    BuildBoundaryConditionVectors(e, p);
  }
  if (CheckPileMatrices(e) == 0) return FailWithDocumentClosed(e);

  int solve_result = 0;
  const int increments = e.actions.NumberOfIncrements;
  for (int i = 1; i <= increments; ++i) {
    const IncrementEnd end = RunIncrement(e, i, solve_result);
    if (end == IncrementEnd::kAbandon) {
      abandoned = true;
      return solve_result;
    }
    if (end == IncrementEnd::kFail) return FailWithDocumentClosed(e);
    if (end == IncrementEnd::kStop) break;
  }
  PostWindowMessage(e, kFinalIncrementCompleted);
  SwitchPhase(e.timer, Phase::kReports);
  WriteXMLOutputEnd(e);
  // The load cases, from what the run's own increment left: each written to the cases
  // document and handed to the host.
  return WorkLoadCases(e);
}

// The end of every run that reached its calculation: the arrays go, the model is reset
// so that the next analysis starts empty, and the host hears how it ended.
void Finish(Engine& e, int result) {
  SwitchPhase(e.timer, Phase::kOther);
  ReleaseWorkspaceAfterRun(e);
  // The outputs stay open for the host; what the run wrote is handed to the system now.
  e.files.xml.flush();
  e.files.txt.flush();
  e.files.log.flush();
  SendInfo(e, "Releasing memory ...");
  ReleaseFoundation(e);
  ReleaseBorehole(e);
  ResetActions(e);
  ResetLoadCases(e.load_cases);
  ResetProject(e);
  const char* closing = result == 1 ? "Finished running the boundary element analysis (success)"
                                    : "Finished running the boundary element analysis (failed)";
  LogLine(e, closing);
  SendInfo(e, closing);
}

}  // namespace

int OpenRunFiles(Engine& e, std::string_view xml_path, std::optional<std::string_view> txt_path) {
  CloseXMLFile(e);
  OpenXMLOutput(e, xml_path);
  if (txt_path) {
    CloseTXTFile(e);
    OpenTXTReport(e, *txt_path);
  }
  return e.project.XMLUnit != 0 ? 1 : 0;
}

namespace {

int OpenAndRun(Engine& e, std::string_view xml_path, std::optional<std::string_view> txt_path) {
  if (OpenRunFiles(e, xml_path, txt_path) == 0) return 0;

  SendInfo(e, "Running the boundary element analysis...");
  if (e.corrected_mechanics) LogLine(e, "Mechanics: corrected");
  int result = 0;
  try {
    ResetYieldCounters(e);
    bool abandoned = false;
    result = Calculate(e, abandoned);
    if (abandoned) return result;
  } catch (const std::bad_alloc&) {
    // Memory ran out in a routine that doesn't report it itself: the run fails in
    // order, with its arrays released.
    SendError(e, "Insufficient virtual memory to proceed");
    result = 0;
  } catch (...) {
    SendError(e, "Internal error");
    result = 0;
  }
  Finish(e, result);
  return result;
}

}  // namespace

int RunAnalysis(Engine& e, std::string_view xml_path, std::optional<std::string_view> txt_path) {
  if (e.running) {
    SendError(e, "An analysis is already running");
    return 0;
  }
  int result = 0;
  try {
    RunningScope running(e);
    result = OpenAndRun(e, xml_path, txt_path);
  } catch (...) {
    CloseFilesDeferredByRun(e);
    throw;
  }
  // The closes that the host asked for during the run, now that its documents are done.
  CloseFilesDeferredByRun(e);
  return result;
}

}  // namespace quellon
