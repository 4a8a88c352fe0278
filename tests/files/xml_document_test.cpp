// Whole XML documents, written by the output routines in the order of a run over a
// workspace filled by hand, and read back by a real XML parser.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/engine.h"
#include "engine/workspace.h"
#include "files/reports.h"
#include "text_model_test_support.h"
#include "xml_test_support.h"

namespace quellon {
namespace {

using test::ParsedXML;

struct Received {
  float loads[6] = {};
  float moves[6] = {};
  float centre[2] = {};
  int load_calls = 0, move_calls = 0, centre_calls = 0;
  std::vector<std::string> messages;
  std::vector<long> posts;
} received;

void ListenTo(Engine& e) {
  received = Received{};
  e.callbacks.SendPileCapLoads = [](const float* a, const float* b, const float* c, const float* d, const float* f,
                                    const float* g) {
    const float v[6] = {*a, *b, *c, *d, *f, *g};
    std::copy(v, v + 6, received.loads);
    ++received.load_calls;
  };
  e.callbacks.SendPileCapDisplacements = [](const float* a, const float* b, const float* c, const float* d,
                                            const float* f, const float* g) {
    const float v[6] = {*a, *b, *c, *d, *f, *g};
    std::copy(v, v + 6, received.moves);
    ++received.move_calls;
  };
  e.foundation.CentreOfRotationCallback = [](const float* x, const float* y) {
    received.centre[0] = *x;
    received.centre[1] = *y;
    ++received.centre_calls;
  };
  e.project.MessageCallback = [](const int*, const char* text) { received.messages.emplace_back(text); };
  e.window_observer = [](const char*, long, long lparam) { received.posts.push_back(lparam); };
}

// Values print with four significant digits.
void ExpectPrinted(double printed, double value, const std::string& what) {
  EXPECT_NEAR(printed, value, 1e-3 * std::fabs(value) + 1e-9) << what;
}

// A model and workspace ready for the writers, with the XML output open.
class XMLRun {
 public:
  XMLRun(int increments, std::initializer_list<int> flags) : path_(test::ScratchPath("run.xml")) {
    test::FillSampleModel(e, increments);
    for (int i = 1; i <= kFlagCount; ++i) e.project.Flags(i) = 0;
    for (int f : flags) e.project.Flags(f) = 1;
    e.foundation.CentreOfRotationX = 0.0f;
    e.foundation.CentreOfRotationY = 0.25f;
    EXPECT_EQ(CreateWorkspace(e), 1);
    ListenTo(e);
    e.files.xml.create(path_);
    e.project.XMLUnit = kXMLUnit;
  }

  // The writers in the order of a run: header and input, then per increment the group
  // tables and the increment blocks (with flag 35 setting the report flags of the last
  // increment first), and the end. A capacity stop ends the increments early.
  void Run(int stop_at = 0) {
    WriteXMLHeader(e);
    WriteXMLInput(e);
    WriteXMLOutputStart(e);
    const int n = e.actions.NumberOfIncrements;
    for (int i = 1; i <= n; ++i) {
      if (i == n && e.project.Flag(35)) {
        for (int f : {19, 21, 22, 25, 27, 28, 31, 36}) e.project.Flags(f) = 1;
      }
      test::FillResults(e, i);
      WriteXMLGroupStiffness(e, stiffness);
      WriteXMLGroupFlexibility(e, flexibility);
      WriteXMLIncrement(e, i);
      if (i == stop_at) {
        WriteXMLCapacityStop(e);
        break;
      }
    }
    WriteXMLOutputEnd(e);
    e.files.xml.close();
  }

  std::string bytes() const { return test::ReadBytes(path_); }
  const std::string& path() const { return path_; }

  Engine e;
  float stiffness[6][6] = {};
  float flexibility[6][6] = {};

 private:
  std::string path_;
};

const char* kAxis[3] = {"X", "Y", "Z"};

TEST(XMLDocument, LinearRunWithTheFullReport) {
  XMLRun run(1, {2, 21, 22, 25, 27, 28, 31});
  run.e.project.Name.assign("Pier <3> & \"quay\" caf\xE9");
  for (int a = 0; a < 6; ++a) {
    for (int b = 0; b < 6; ++b) {
      run.stiffness[a][b] = 1.5f * static_cast<float>(a + 1) - 0.25f * static_cast<float>(b * b);
      run.flexibility[a][b] = 0.01f * static_cast<float>(a + 1) + 0.003f * static_cast<float>(b + 1);
    }
  }
  run.Run();
  ParsedXML doc(run.path());
  ASSERT_TRUE(doc.ok()) << run.bytes();

  EXPECT_EQ(doc.Text("/Tolmark/@version"), "3.23");
  // The name comes back as the host gave it (here in UTF-8, as parsers hand text on).
  EXPECT_EQ(doc.Text("/Tolmark/Input/Project/Name"), "Pier <3> & \"quay\" caf\xC3\xA9");
  EXPECT_EQ(doc.Text("/Tolmark/Input/Comment"), "3D Linear");
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment"), 1);
  EXPECT_EQ(doc.Text("/Tolmark/Output/Increment/@number"), "1");

  const std::string group = "/Tolmark/Output/Increment/Pile-Group/";
  struct Family {
    const char* path;
    int row0, col0;
    const float (*t)[6];
  } families[] = {
      {"Stiffnesses/Force-Displacement-Stiffness", 0, 0, run.stiffness},
      {"Stiffnesses/Force-Rotation-Stiffness", 0, 3, run.stiffness},
      {"Stiffnesses/Moment-Displacement-Stiffness", 3, 0, run.stiffness},
      {"Stiffnesses/Moment-Rotation-Stiffness", 3, 3, run.stiffness},
      {"Flexibilities/Displacement-Force-Flexibility", 0, 0, run.flexibility},
      {"Flexibilities/Rotation-Force-Flexibility", 3, 0, run.flexibility},
      {"Flexibilities/Displacement-Moment-Flexibility", 0, 3, run.flexibility},
      {"Flexibilities/Rotation-Moment-Flexibility", 3, 3, run.flexibility},
  };
  for (const Family& f : families) {
    EXPECT_EQ(doc.Count(group + f.path), 9) << f.path;
    for (int a = 0; a < 3; ++a) {
      for (int b = 0; b < 3; ++b) {
        const std::string at = group + f.path + "[@action-axis='" + kAxis[a] + "'][@effect-axis='" + kAxis[b] + "']";
        ExpectPrinted(doc.Number(at + "/@value"), f.t[f.row0 + a][f.col0 + b], at);
      }
    }
  }

  // The pile cap agrees with what the host was sent, each callback once.
  EXPECT_EQ(received.load_calls, 1);
  EXPECT_EQ(received.move_calls, 1);
  EXPECT_EQ(received.centre_calls, 1);
  const std::string cap = "/Tolmark/Output/Increment/Pile-Cap/";
  ExpectPrinted(doc.Number(cap + "Centre-Of-Rotation/Position[@axis='Y']/@value"), received.centre[1], "centre");
  for (int a = 0; a < 3; ++a) {
    ExpectPrinted(doc.Number(cap + "Actions/Force[@axis='" + kAxis[a] + "']/@value"), received.loads[a], "force");
    ExpectPrinted(doc.Number(cap + "Effects/Displacement[@axis='" + kAxis[a] + "']/@value"),
                  std::fabs(received.moves[a]) < 1e-6f ? 0.0 : 1000.0 * received.moves[a], "displacement");
    ExpectPrinted(doc.Number(cap + "Effects/Rotation[@axis='" + kAxis[a] + "']/@value"), 1000.0 * received.moves[3 + a],
                  "rotation");
  }
  ExpectPrinted(doc.Number(cap + "Actions/Moment[@axis='Y']/@value"), received.loads[4], "moment");
  // Below the cut: the host gets the value, the document zero.
  EXPECT_FLOAT_EQ(received.loads[5], 0.0004f);
  EXPECT_EQ(doc.Text(cap + "Actions/Moment[@axis='Z']/@value"), "0.");
  EXPECT_EQ(doc.Text(cap + "Effects/Displacement[@axis='Y']/@value"), "0.");

  // Elements of the piles, by their rows in the tables.
  const Workspace& ws = run.e.ws;
  const int n = run.e.foundation.NumberOfElements;
  const std::string pile2 = "/Tolmark/Output/Increment/Piles/Pile[@number='2']/";
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment/Piles/Pile"), 3);
  EXPECT_EQ(doc.Count(pile2 + "Element"), n + 1);
  for (int k = 1; k <= n; ++k) {
    const std::string el = pile2 + "Element[@number='" + std::to_string(k) + "']/";
    const int q = n + k;
    const int r = (n + 1) + k;
    ExpectPrinted(doc.Number(el + "Depth/@value"), (k - 1) * 12.0 / n, "depth");
    ExpectPrinted(doc.Number(el + "Normal-Stress[@axis='X']/@value"), ws.StressX(q), "stress x");
    ExpectPrinted(doc.Number(el + "Normal-Stress[@axis='Y']/@value"), ws.StressY(q), "stress y");
    ExpectPrinted(doc.Number(el + "Torsional-Stress/@value"), ws.StressTorsion(q), "torsion");
    ExpectPrinted(doc.Number(el + "Shear-Stress/@value"), ws.StressAxial(r), "shear");
    ExpectPrinted(doc.Number(el + "Displacement[@axis='Z']/@value"), ws.DispAxial(r), "axial displacement");
    ExpectPrinted(doc.Number(el + "Rotation/@value"), ws.Twist(q), "twist");
    ExpectPrinted(doc.Number(el + "Force[@axis='Z']/@value"), ws.LoadAxial(r), "axial load");
    ExpectPrinted(doc.Number(el + "Moment[@axis='X']/@value"), ws.MomentYZ(q), "moment yz");
  }
  ExpectPrinted(doc.Number(pile2 + "Toe/Bearing-Pressure/@value"), ws.StressAxial(2 * (n + 1)), "toe");
  ExpectPrinted(doc.Number(pile2 + "Toe/Force/@value"), ws.LoadAxial(2 * (n + 1)), "toe load");
  // Element 0: the free-standing length, no stresses, the pile head's loads.
  EXPECT_EQ(doc.Text(pile2 + "Element[@number='0']/Depth/@value"), "-1.250");
  EXPECT_EQ(doc.Text(pile2 + "Element[@number='0']/Normal-Stress[@axis='X']/@value"), "0.");
  ExpectPrinted(doc.Number(pile2 + "Element[@number='0']/Moment[@axis='Y']/@value"), ws.PileHeadMomentXZ(2), "head");
  // A linear run has no limits or yield states.
  EXPECT_EQ(doc.Count("//@limit"), 0);
  EXPECT_EQ(doc.Count("//@yield"), 0);

  // Raw bytes: the declared encoding is honoured (one byte for the accent), CR LF ends.
  const std::string bytes = run.bytes();
  EXPECT_EQ(bytes.rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n", 0), 0u);
  EXPECT_NE(bytes.find("caf\xE9"), std::string::npos);
  for (std::size_t at = bytes.find('\n'); at != std::string::npos; at = bytes.find('\n', at + 1)) {
    ASSERT_EQ(bytes[at - 1], '\r') << at;
  }
  EXPECT_NE(bytes.find("    </Output>\r\n</Tolmark>\r\n"), std::string::npos);
}

TEST(XMLDocument, NonLinearRunWithFlag35ReportsTheLastIncrementAndASummary) {
  XMLRun run(4, {35});
  run.Run();
  ParsedXML doc(run.path());
  ASSERT_TRUE(doc.ok()) << run.bytes();

  // The run's element, numbered by the last increment, then the summary of the others.
  EXPECT_EQ(doc.Text("/Tolmark/Output/No-Of-Increments/@number"), "4");
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment"), 4);
  for (int i = 1; i <= 4; ++i) {
    const int expected = i == 1 ? 4 : i - 1;
    EXPECT_EQ(doc.Text("/Tolmark/Output/Increment[" + std::to_string(i) + "]/@number"), std::to_string(expected));
  }
  EXPECT_EQ(doc.Count("//Pile-Group"), 0);  // linear runs only
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment[1]/Piles"), 1);
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment[@number='2']/Piles"), 0);

  // The cap block of the last increment only, and the host heard of it once.
  EXPECT_EQ(doc.Count("//Centre-Of-Rotation"), 1);
  EXPECT_EQ(received.load_calls, 1);
  const std::string cap = "/Tolmark/Output/Increment[1]/Pile-Cap/";
  ExpectPrinted(doc.Number(cap + "Actions/Force[@axis='Z']/@value"), received.loads[2], "Fz");
  ExpectPrinted(doc.Number(cap + "Effects/Rotation[@axis='X']/@value"), 1000.0 * received.moves[3], "rotation");

  // The summary rows are the history tables.
  const Workspace& ws = run.e.ws;
  for (int i = 1; i <= 3; ++i) {
    const std::string inc = "/Tolmark/Output/Increment[@number='" + std::to_string(i) + "']/Pile-Cap/";
    ExpectPrinted(doc.Number(inc + "Actions/Force[@axis='Z']/@value"), ws.HistoryLoad(i, 1), "summary Fz");
    ExpectPrinted(doc.Number(inc + "Actions/Moment[@axis='X']/@value"), ws.HistoryLoad(i, 5), "summary Mx");
    ExpectPrinted(doc.Number(inc + "Effects/Displacement[@axis='X']/@value"), 1000.0 * ws.HistoryDisp(i, 2),
                  "summary dx");
    EXPECT_EQ(doc.Text(inc + "Effects/Displacement[@axis='Y']/@value"), "0.");  // below 1e-6 m
  }

  // Limits and yield states, by the rows of the stress tables.
  const int n = run.e.foundation.NumberOfElements;
  for (int p = 1; p <= 3; ++p) {
    for (int k = 1; k <= n; ++k) {
      const std::string el = "/Tolmark/Output/Increment[1]/Piles/Pile[@number='" + std::to_string(p) +
                             "']/Element[@number='" + std::to_string(k) + "']/";
      const int q = (p - 1) * n + k;
      const int r = (p - 1) * (n + 1) + k;
      ExpectPrinted(doc.Number(el + "Normal-Stress[@axis='Y']/@limit"), ws.LimitY(q), "limit y");
      EXPECT_EQ(doc.Text(el + "Normal-Stress[@axis='Y']/@yield"), ws.Yielded(3, q) ? "true" : "false");
      EXPECT_EQ(doc.Text(el + "Torsional-Stress/@yield"), ws.Yielded(4, q) ? "true" : "false");
      ExpectPrinted(doc.Number(el + "Shear-Stress/@limit"), ws.LimitAxial(r), "limit axial");
      EXPECT_EQ(doc.Text(el + "Shear-Stress/@yield"), ws.Yielded(1, r) ? "true" : "false");
    }
    const int toe = p * (n + 1);
    const std::string t = "/Tolmark/Output/Increment[1]/Piles/Pile[@number='" + std::to_string(p) + "']/Toe/";
    ExpectPrinted(doc.Number(t + "Bearing-Pressure/@limit"), ws.LimitAxial(toe), "toe limit");
    EXPECT_EQ(doc.Text(t + "Bearing-Pressure/@yield"), ws.Yielded(1, toe) ? "true" : "false");
  }
  // Element 0 keeps its plain zero stresses.
  EXPECT_EQ(doc.Count("//Element[@number='0']/*[@limit]"), 0);

  // The non-linear input echo.
  EXPECT_EQ(doc.Text("/Tolmark/Input/Comment"), "3D Non-Linear");
  EXPECT_EQ(doc.Text("/Tolmark/Input/Loads/Increments"), "4");
  EXPECT_EQ(doc.Text("/Tolmark/Input/Layers/Layer[@number='3']/Soil/@type"), "Rock");
  EXPECT_EQ(doc.Text("/Tolmark/Input/Layers/Layer[@number='2']/Soil/UndrainedShearStrength/Gradient/@value"), "2.500");
  EXPECT_EQ(doc.Count("/Tolmark/Input/BearingCapacityFactor"), 0);  // last layer isn't coarse soil
  EXPECT_EQ(doc.Count("/Tolmark/Input/LimitingStresses/*"), 2);
  EXPECT_EQ(doc.Text("/Tolmark/Input/Layers/ElasticUnloading/@flag"), "true");
  EXPECT_EQ(doc.Text("/Tolmark/Input/Piles/MaxInteractionDistance/@value"), "12.50");
  EXPECT_EQ(doc.Count("/Tolmark/Input/Piles/MaxInteractionDistance/@units"), 0);
  EXPECT_EQ(doc.Count("/Tolmark/Input/Piles/Pile[@number='1']/ReinforcedLength"), 1);
  EXPECT_EQ(doc.Count("/Tolmark/Input/Piles/Pile[@number='2']/ReinforcedLength"), 0);
}

TEST(XMLDocument, HeaderMessagesAndSilenceWhenClosed) {
  XMLRun run(1, {});
  run.Run();
  const auto lines = test::SplitLines(run.bytes());
  ASSERT_GE(lines.size(), 6u);
  EXPECT_EQ(lines[1], "<!--Tolmark XML Output File-->");
  EXPECT_EQ(lines[4], "<!--File Output.xml-->");
  EXPECT_EQ(lines[5].rfind("<Tolmark version=\"3.23\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                           "xsi:noNamespaceSchemaLocation=\"",
                           0),
            0u);
  EXPECT_NE(lines[5].find("/xml-schemas/Tolmark.xsd\">"), std::string::npos);
  ASSERT_FALSE(received.messages.empty());
  EXPECT_EQ(received.messages.front(), "Writing data to XML output file...");
  EXPECT_EQ(received.messages.back(), "Finished writing data to XML output file");
  EXPECT_EQ(received.posts, std::vector<long>{-247});
  ParsedXML doc(run.path());
  EXPECT_TRUE(doc.ok());

  // With the unit field at 0 nothing is written, said or posted, though a file is open.
  XMLRun quiet(2, {21, 22, 25, 27, 28, 31, 36});
  quiet.e.project.XMLUnit = 0;
  quiet.Run(1);
  EXPECT_EQ(quiet.bytes(), "");
  EXPECT_TRUE(received.messages.empty());
  EXPECT_TRUE(received.posts.empty());
  EXPECT_EQ(received.load_calls, 0);
}

TEST(XMLDocument, CapacityStopClosesTheIncrementOnce) {
  // Stopped at increment 2 of 4 under flag 35: no blocks yet, the element closes at the
  // stop, at indentation 4.
  XMLRun early(4, {35});
  early.Run(2);
  EXPECT_NE(early.bytes().find("        <Increment number=\"4\">\r\n    </Increment>\r\n    </Output>\r\n</Tolmark>\r\n"),
            std::string::npos)
      << early.bytes();
  EXPECT_TRUE(ParsedXML(early.path()).ok());
  // Stopped at the last increment: the piles block closed the element already.
  XMLRun last(4, {35});
  last.Run(4);
  ParsedXML doc(last.path());
  ASSERT_TRUE(doc.ok()) << last.bytes();
  EXPECT_EQ(doc.Count("/Tolmark/Output/Increment"), 4);
}

TEST(XMLDocument, EveryFlagCombinationGivesAWellFormedDocument) {
  const int flags[8] = {21, 22, 25, 27, 28, 31, 35, 36};
  int documents = 0;
  for (int increments : {1, 3}) {
    for (int stop : {0, 2, 3}) {
      if (increments == 1 && stop == 2) continue;
      for (int mask = 0; mask < 256; ++mask) {
        std::vector<int> set;
        for (int b = 0; b < 8; ++b) {
          if (mask & (1 << b)) set.push_back(flags[b]);
        }
        XMLRun run(increments, {});
        for (int f : set) run.e.project.Flags(f) = 1;
        run.Run(stop);
        ParsedXML doc(run.path());
        ASSERT_TRUE(doc.ok()) << "increments " << increments << ", stop " << stop << ", mask " << mask << "\n"
                              << run.bytes();
        // One root with its input and output, and the run's element always there.
        ASSERT_EQ(doc.Count("/Tolmark/*"), 2);
        ASSERT_EQ(doc.Count("/Tolmark/Output/Increment[@number='" + std::to_string(increments) + "']"), 1);
        ++documents;
      }
    }
  }
  EXPECT_EQ(documents, 256 * 5);
}

TEST(XMLDocument, PilesWithoutThePileCapStartAtTheLeftMargin) {
  XMLRun run(1, {27, 28, 31});
  run.Run();
  const std::string bytes = run.bytes();
  EXPECT_NE(bytes.find("\r\n<Piles>\r\n    <No-Of-Piles number=\"3\"/>\r\n"), std::string::npos);
  EXPECT_TRUE(ParsedXML(run.path()).ok());
}

}  // namespace
}  // namespace quellon
