// The results of a run as the engine's XML output holds them, read once into plain
// structures: the piles of the input echo with their geometry, and per increment the cap
// loads and movements and the stress, movement and load of every element of every pile.
//
// The document stores cap vectors in the external order (X, Y, Z, about X, about Y,
// about Z) and the element results in each pile's own axes: Z along the pile, X and Y
// across it, moments about X lying in the pile's YZ plane and about Y in its XZ plane.
// Values are kept as the document prints them; only the cap movement, printed in mm and
// mrad, is turned back into m and rad.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace quellon_cli {

// The four soil stresses on an element, in the order the arrays below use.
enum StressKind { kStressAxial = 0, kStressNormalX = 1, kStressNormalY = 2, kStressTorsion = 3 };

struct ElementResult {
  // 0: the free-standing part above the ground, whose loads are those of the pile head at
  // cap level; 1 to n: shaft elements from the top; n + 1: the toe (the base).
  int number = 0;
  bool toe = false;
  double depth = 0;   // m, as the document gives it: along the pile from the ground to the top
  double length = 0;  // m, along the pile
  // kPa. Axial: shear on the shaft, or the pressure on the base at the toe.
  std::array<double, 4> stress{};
  std::array<double, 4> limit{};     // non-linear runs only
  std::array<bool, 4> yielded{};     // non-linear runs only
  std::array<double, 3> movement{};  // m: X, Y, along the pile (Z)
  double twist = 0;                  // rad
  std::array<double, 3> force{};     // kN at the top of the element: shear X, shear Y, axial (Z)
  std::array<double, 3> moment{};    // kNm at the top: about X, about Y, torque about the pile axis
};

struct PileResult {
  int number = 0;
  std::string name;
  std::vector<ElementResult> elements;  // 0, 1 .. n, then the toe
};

struct IncrementResult {
  int number = 0;
  bool has_cap = false;
  std::array<double, 6> cap_load{};  // kN, kNm: Fx, Fy, Fz, Mx, My, Mz
  std::array<double, 6> cap_move{};  // m, rad: X, Y, Z, about X, about Y, about Z
  std::vector<PileResult> piles;     // empty when the document has no piles block for it
};

struct PileInput {
  std::string name;
  double length = 0;       // embedded, along the pile
  double free_length = 0;  // vertical, above the ground
  double shaft_diameter = 0;
  double base_diameter = 0;
  double rake_x = 0, rake_y = 0;  // degrees
  double x = 0, y = 0;            // head position
};

struct RunResults {
  bool ok = false;
  std::string problem;  // why the document could not be read
  std::string flags;    // the 40 digits the run started with
  bool nonlinear = false;
  int elements = 0;             // shaft elements per pile
  int declared_increments = 0;  // the model's count; a run may stop before it
  bool have_centre = false;
  double centre_x = 0, centre_y = 0;
  std::vector<PileInput> piles;
  std::vector<IncrementResult> increments;  // in order of increment; only those the document holds

  bool flag(int i) const {
    return i >= 1 && i <= static_cast<int>(flags.size()) && flags[static_cast<std::size_t>(i - 1)] == '1';
  }
  // The last increment with a piles block, or null.
  const IncrementResult* last_with_piles() const;
  // True when every axial unknown of the last piles block has yielded: the run stopped at
  // the capacity of the group.
  bool axial_capacity_used_up() const;
};

RunResults ReadRunResults(const std::string& xml_path);

// The document of a run's load cases: the run's input echo, then per case its loads and
// its increments in the layout of the run's own output. Each case comes as the results of
// a run of its own (the input of the run, the increments of the case), so that what reads
// a run's results reads a case's.
struct LoadCaseResult {
  int number = 0;
  std::string name;
  std::array<double, 8> loads{};  // Fx, Fy, Fz (kN), Mx, My, Mz (kNm), X, Y (m)
  RunResults results;             // declared_increments: the case's own count
  int capacity_increment = 0;     // a non-linear case stopped at the group's capacity: the last increment
};

struct LoadCaseDocument {
  bool ok = false;
  std::string problem;
  bool nonlinear = false;
  std::string comment;  // how the engine worked the cases
  std::vector<LoadCaseResult> cases;
};

LoadCaseDocument ReadLoadCaseDocument(const std::string& xml_path);

// Pile geometry shared by the CSV files, the summary and the warnings.
struct PileGeometry {
  double ca = 1, sa = 0, ce = 1, se = 0;  // cosines and sines of the two rakes
  double along_free = 0;                  // free-standing length along the pile
  double h = 0;                           // element length along the pile
  double vertical = 1;                    // cos a * cos e: depth per length along the pile

  PileGeometry(const PileInput& pile, int elements);
  // Depth below the ground of a point at `along` metres down the pile from the ground.
  double depth(double along) const { return along * vertical; }
};

// The loads at a pile head (element 0) in external axes: the forces turned from the pile's
// axes by its rakes, as the engine turns them when it adds the piles up into the cap; the
// moments and the torque as the engine carries them into the cap, unturned.
// Fx, Fy, Fz (kN), Mx, My, Mz (kNm).
std::array<double, 6> HeadLoadsExternal(const PileGeometry& g, const ElementResult& head);

// The movement of pile head `pile` (0-based) in external axes, X, Y, Z (m) and twist (rad),
// from the cap movement of the increment, by the rigid-cap relation the engine uses for the
// head movement it reports (which leaves out the horizontal movement that a twist of the
// cap gives a pile away from the centre).
std::array<double, 4> HeadMovementExternal(const RunResults& r, const IncrementResult& inc, std::size_t pile);

// The largest bending moment of a pile, the resultant of the moments about X and about Y
// at the element tops from the head down, and the largest axial force, each with the depth
// below the ground where it acts (negative above the ground, at the head).
struct PileExtremes {
  double moment = 0, moment_depth = 0;
  double axial = 0, axial_depth = 0;  // signed, the largest in magnitude
};
PileExtremes ExtremesOf(const PileResult& pile, const PileGeometry& g);

}  // namespace quellon_cli
