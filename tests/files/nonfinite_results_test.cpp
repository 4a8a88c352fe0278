// A value that is not a number reaching the results of an increment ends the run as a
// failure, in order: the error names the value, nothing of it is written as a result,
// and the XML document is closed well-formed. The NaN is put into the system matrix or
// the soil matrix by the host's increment callback, which a test can reach.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <limits>

#include "engine/run_analysis.h"
#include "../common/engine_support.h"
#include "../common/xml_xpath.h"

namespace quellon {
namespace {

using testing::ReadBytes;
using testing::TempFile;

Engine* poked = nullptr;
RealMatrix* poked_matrix = nullptr;
void PokeAtIncrement2(const int* increment) {
  if (*increment == 2) (*poked_matrix)(2, 2) = std::numeric_limits<float>::quiet_NaN();
}

// Two piles, three increments of a vertical and a horizontal load; TXT results at every
// increment.
void NonLinearModel(Engine& e, bool lapack) {
  testing::SmallModel(e, 2, 3, 3);
  ReleaseWorkspace(e);
  Layer& l = e.borehole.Layers(1);
  l.cu = 80.0f;
  l.alpha = 0.5f;
  l.WeightDensity = 18.0f;
  e.project.Rs = e.project.Rb = e.project.Rl = e.project.Rt = 0.5f;
  e.project.DynamicModel = e.project.Flags(16) = lapack ? 1 : 0;
  for (int flag : {19, 23, 24, 25, 26, 27, 28, 31}) e.project.Flags(flag) = 1;
  e.actions.Fz = 300.0f;
  e.actions.Fx = 20.0f;
}

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
  return s;
}

struct Case {
  const char* what;
  bool lapack;
  RealMatrix& (*matrix)(Workspace&);
  const char* error_start;
};

TEST(NonFiniteResults, EndTheRunAsAFailureWithTheDocumentsSound) {
  const Case cases[] = {
      // The system solved by LAPACK, and by the engine's own LU route.
      {"system matrix, LAPACK", true, [](Workspace& w) -> RealMatrix& { return w.system.GD; }, "2 Error - increment 2: the solution for a unit "},
      {"system matrix, LU", false, [](Workspace& w) -> RealMatrix& { return w.system.GD; }, "2 Error - increment 2: the solution for a unit "},
      // The soil matrix alone feeds the soil movement of the increment.
      {"soil matrix", true, [](Workspace& w) -> RealMatrix& { return w.G; },
       "2 Error - increment 2: the soil movement at the axial unknown of element 2 of pile 1 is not a finite "
       "number (nan)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TempFile xml(".xml"), txt(".txt");
    Engine e;
    NonLinearModel(e, c.lapack);
    poked = &e;
    poked_matrix = &c.matrix(e.ws);
    e.callbacks.CreateIncrement = &PokeAtIncrement2;
    e.project.MessageCallback = &testing::RecordMessage;
    std::vector<std::string>& messages = testing::Received();
    messages.clear();
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(RunAnalysis(e, xml.path(), txt.path()), 0);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Increment 1\n");

    const auto error = std::find_if(messages.begin(), messages.end(), [](const std::string& m) { return m[0] == '2'; });
    ASSERT_NE(error, messages.end());
    EXPECT_EQ(error->rfind(c.error_start, 0), 0u) << *error;
    EXPECT_EQ(std::count_if(messages.begin(), messages.end(), [](const std::string& m) { return m[0] == '2'; }), 1);
    ASSERT_GE(messages.size(), 3u);
    EXPECT_EQ(messages[messages.size() - 3], "0 Finished writing data to XML output file");
    EXPECT_EQ(messages[messages.size() - 2], "0 Releasing memory ...");
    EXPECT_EQ(messages.back(), "0 Finished running the boundary element analysis (failed)");

    // Increment 1 stands in both outputs, and nothing that isn't a number anywhere.
    const qtest::XmlDoc doc(xml.path());
    ASSERT_TRUE(doc.ok()) << "the XML output is not well-formed";
    EXPECT_EQ(doc.Count("/Tolmark/Output"), 1);
    EXPECT_EQ(doc.Count("//Pile-Cap"), 1);
    const std::string xml_text = Lower(ReadBytes(xml.path()));
    const std::string txt_text = Lower(ReadBytes(txt.path()));
    EXPECT_EQ(xml_text.find("nan"), std::string::npos);
    EXPECT_EQ(xml_text.find("inf\""), std::string::npos);
    // The TXT report writes a value that isn't finite as asterisks: the results of the
    // increment that failed must not be there at all, only its banner.
    EXPECT_NE(txt_text.find("output at increment    2"), std::string::npos);
    const std::size_t results = txt_text.find("resultant applied loads:");
    ASSERT_NE(results, std::string::npos);
    EXPECT_EQ(txt_text.find("resultant applied loads:", results + 1), std::string::npos);

    // The run is over: model reset, arrays released, engine free.
    EXPECT_EQ(e.foundation.NumberOfPiles, 0);
    EXPECT_TRUE(e.ws.G.empty());
    EXPECT_FALSE(e.running);
  }
}

}  // namespace
}  // namespace quellon
