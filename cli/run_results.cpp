#include "run_results.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

namespace quellon_cli {

namespace {

using Node = const xmlNode*;

bool Named(Node n, const char* name) {
  return n != nullptr && n->type == XML_ELEMENT_NODE && std::strcmp(reinterpret_cast<const char*>(n->name), name) == 0;
}

Node Child(Node parent, const char* name) {
  if (parent == nullptr) return nullptr;
  for (Node c = parent->children; c != nullptr; c = c->next)
    if (Named(c, name)) return c;
  return nullptr;
}

std::vector<Node> Children(Node parent, const char* name) {
  std::vector<Node> out;
  if (parent == nullptr) return out;
  for (Node c = parent->children; c != nullptr; c = c->next)
    if (Named(c, name)) out.push_back(c);
  return out;
}

std::string Attribute(Node n, const char* name) {
  if (n == nullptr) return "";
  xmlChar* v = xmlGetProp(n, reinterpret_cast<const xmlChar*>(name));
  if (v == nullptr) return "";
  std::string s(reinterpret_cast<const char*>(v));
  xmlFree(v);
  return s;
}

std::string Text(Node n) {
  if (n == nullptr) return "";
  xmlChar* v = xmlNodeGetContent(n);
  if (v == nullptr) return "";
  std::string s(reinterpret_cast<const char*>(v));
  xmlFree(v);
  return s;
}

// Numbers are read without regard to the locale: the document always has a point.
double Number(const std::string& s) {
  double v = 0;
  const char* first = s.data();
  while (first < s.data() + s.size() && *first == ' ') ++first;
  if (first < s.data() + s.size() && *first == '+') ++first;
  std::from_chars(first, s.data() + s.size(), v);
  return v;
}

int Integer(const std::string& s) { return static_cast<int>(std::lround(Number(s))); }

double ValueOf(Node parent, const char* name) { return Number(Attribute(Child(parent, name), "value")); }

// The child `name` whose axis attribute is `axis`.
Node AxisChild(Node parent, const char* name, const char* axis) {
  if (parent == nullptr) return nullptr;
  for (Node c = parent->children; c != nullptr; c = c->next)
    if (Named(c, name) && Attribute(c, "axis") == axis) return c;
  return nullptr;
}

double AxisValue(Node parent, const char* name, const char* axis) {
  return Number(Attribute(AxisChild(parent, name, axis), "value"));
}

void ReadStress(Node n, ElementResult& e, StressKind kind) {
  e.stress[kind] = Number(Attribute(n, "value"));
  e.limit[kind] = Number(Attribute(n, "limit"));
  e.yielded[kind] = Attribute(n, "yield") == "true";
}

ElementResult ReadElement(Node n) {
  ElementResult e;
  e.number = Integer(Attribute(n, "number"));
  e.depth = ValueOf(n, "Depth");
  e.length = ValueOf(n, "Length");
  ReadStress(Child(n, "Shear-Stress"), e, kStressAxial);
  ReadStress(AxisChild(n, "Normal-Stress", "X"), e, kStressNormalX);
  ReadStress(AxisChild(n, "Normal-Stress", "Y"), e, kStressNormalY);
  ReadStress(AxisChild(n, "Torsional-Stress", "Z"), e, kStressTorsion);
  static const char* const kAxes[3] = {"X", "Y", "Z"};
  for (std::size_t a = 0; a < 3; ++a) {
    e.movement[a] = AxisValue(n, "Displacement", kAxes[a]);
    e.force[a] = AxisValue(n, "Force", kAxes[a]);
    e.moment[a] = AxisValue(n, "Moment", kAxes[a]);
  }
  e.twist = AxisValue(n, "Rotation", "Z");
  return e;
}

ElementResult ReadToe(Node n, int elements) {
  ElementResult e;
  e.number = elements + 1;
  e.toe = true;
  e.depth = ValueOf(n, "Depth");
  ReadStress(Child(n, "Bearing-Pressure"), e, kStressAxial);
  e.movement[2] = AxisValue(n, "Displacement", "Z");
  e.force[2] = AxisValue(n, "Force", "Z");
  return e;
}

std::vector<PileResult> ReadPiles(Node piles, int elements) {
  std::vector<PileResult> out;
  for (Node p : Children(piles, "Pile")) {
    PileResult r;
    r.number = Integer(Attribute(p, "number"));
    r.name = Text(Child(p, "Name"));
    for (Node e : Children(p, "Element")) r.elements.push_back(ReadElement(e));
    if (Node toe = Child(p, "Toe")) r.elements.push_back(ReadToe(toe, elements));
    out.push_back(std::move(r));
  }
  return out;
}

void ReadCap(Node cap, IncrementResult& inc, RunResults& r) {
  static const char* const kAxes[3] = {"X", "Y", "Z"};
  Node actions = Child(cap, "Actions");
  Node effects = Child(cap, "Effects");
  for (std::size_t a = 0; a < 3; ++a) {
    inc.cap_load[a] = AxisValue(actions, "Force", kAxes[a]);
    inc.cap_load[a + 3] = AxisValue(actions, "Moment", kAxes[a]);
    inc.cap_move[a] = AxisValue(effects, "Displacement", kAxes[a]) / 1000.0;
    inc.cap_move[a + 3] = AxisValue(effects, "Rotation", kAxes[a]) / 1000.0;
  }
  inc.has_cap = true;
  if (Node centre = Child(cap, "Centre-Of-Rotation")) {
    r.have_centre = true;
    r.centre_x = AxisValue(centre, "Position", "X");
    r.centre_y = AxisValue(centre, "Position", "Y");
  }
}

IncrementResult& IncrementAt(RunResults& r, int number) {
  for (IncrementResult& i : r.increments)
    if (i.number == number) return i;
  // Keep them in order of number.
  auto at = r.increments.begin();
  while (at != r.increments.end() && at->number < number) ++at;
  at = r.increments.insert(at, IncrementResult{});
  at->number = number;
  return *at;
}

void ReadInput(Node input, RunResults& r) {
  r.flags = Text(Child(input, "Flags"));
  r.nonlinear = Text(Child(input, "NonLinear")) == "1";
  Node piles = Child(input, "Piles");
  r.elements = Integer(Text(Child(piles, "Elements")));
  for (Node p : Children(piles, "Pile")) {
    PileInput pi;
    pi.name = Text(Child(p, "Name"));
    pi.length = ValueOf(p, "EmbeddedLength");
    pi.free_length = ValueOf(p, "FreeStandingLength");
    pi.shaft_diameter = ValueOf(p, "ExternalDiameter");
    pi.base_diameter = ValueOf(p, "BaseDiameter");
    pi.rake_x = ValueOf(p, "XRake");
    pi.rake_y = ValueOf(p, "YRake");
    pi.x = ValueOf(p, "XPosition");
    pi.y = ValueOf(p, "YPosition");
    r.piles.push_back(pi);
  }
}

// The run's increment element holds the blocks of every increment that asked for them,
// in order: with the cap flag (25) or the three piles flags (27, 28, 31) set from the
// start, one block per increment performed; otherwise the complete report of the last
// increment alone, which belongs to the element's own number. The summary of the earlier
// increments stands beside it, one element per increment, cap blocks only.
void ReadOutput(Node output, RunResults& r) {
  std::vector<Node> increments = Children(output, "Increment");
  if (increments.empty()) return;
  Node run = increments.front();
  const int own = Integer(Attribute(run, "number"));
  const bool cap_every = r.flag(25);
  const bool piles_every = r.flag(27) && r.flag(28) && r.flag(31);
  int caps = 0, piles = 0;
  for (Node c = run->children; c != nullptr; c = c->next) {
    if (Named(c, "Pile-Cap")) {
      ReadCap(c, IncrementAt(r, cap_every ? ++caps : own), r);
    } else if (Named(c, "Piles")) {
      IncrementAt(r, piles_every ? ++piles : own).piles = ReadPiles(c, r.elements);
    }
  }
  for (std::size_t i = 1; i < increments.size(); ++i) {
    IncrementResult& inc = IncrementAt(r, Integer(Attribute(increments[i], "number")));
    if (!inc.has_cap)
      if (Node cap = Child(increments[i], "Pile-Cap")) ReadCap(cap, inc, r);
  }
}

// A load case's increments. The engine writes them one element each, holding the blocks
// of its own increment; an element that holds the blocks of several increments (the
// layout of the run's own output) is read as the run's is.
void ReadCaseIncrements(Node load_case, RunResults& r) {
  const std::vector<Node> increments = Children(load_case, "Increment");
  for (Node inc : increments) {
    if (Children(inc, "Pile-Cap").size() > 1 || Children(inc, "Piles").size() > 1) {
      ReadOutput(load_case, r);
      return;
    }
  }
  for (Node inc : increments) {
    IncrementResult& i = IncrementAt(r, Integer(Attribute(inc, "number")));
    if (Node cap = Child(inc, "Pile-Cap")) ReadCap(cap, i, r);
    if (Node piles = Child(inc, "Piles")) i.piles = ReadPiles(piles, r.elements);
  }
}

}  // namespace

const IncrementResult* RunResults::last_with_piles() const {
  for (auto i = increments.rbegin(); i != increments.rend(); ++i)
    if (!i->piles.empty()) return &*i;
  return nullptr;
}

bool RunResults::axial_capacity_used_up() const {
  const IncrementResult* last = last_with_piles();
  if (!nonlinear || last == nullptr) return false;
  for (const PileResult& p : last->piles)
    for (const ElementResult& e : p.elements)
      if (e.number > 0 && !e.yielded[kStressAxial]) return false;
  return true;
}

namespace {

using Document = std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)>;

// The document's root, or null with the reason in `problem`.
Node RootOf(const Document& doc, const std::string& xml_path, std::string& problem) {
  if (!doc) {
    const xmlError* e = xmlGetLastError();
    problem = e != nullptr && e->message != nullptr ? std::string(e->message) : "cannot read " + xml_path;
    while (!problem.empty() && problem.back() == '\n') problem.pop_back();
    return nullptr;
  }
  Node root = xmlDocGetRootElement(doc.get());
  if (!Named(root, "Tolmark")) {
    problem = "not an output of the engine: the root element is not Tolmark";
    return nullptr;
  }
  return root;
}

Document ReadDocument(const std::string& xml_path) {
  return Document(
      xmlReadFile(xml_path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING), xmlFreeDoc);
}

}  // namespace

RunResults ReadRunResults(const std::string& xml_path) {
  RunResults r;
  const Document doc = ReadDocument(xml_path);
  Node root = RootOf(doc, xml_path, r.problem);
  if (root == nullptr) return r;
  Node input = Child(root, "Input");
  Node output = Child(root, "Output");
  ReadInput(input, r);
  r.declared_increments = Integer(Attribute(Child(output, "No-Of-Increments"), "number"));
  ReadOutput(output, r);
  r.ok = true;
  return r;
}

LoadCaseDocument ReadLoadCaseDocument(const std::string& xml_path) {
  LoadCaseDocument d;
  const Document doc = ReadDocument(xml_path);
  Node root = RootOf(doc, xml_path, d.problem);
  if (root == nullptr) return d;
  Node cases = Child(root, "Load-Cases");
  if (cases == nullptr) {
    d.problem = "no load cases in the document";
    return d;
  }
  // Each case is read as a run of its own: the run's input, then the case's increments.
  RunResults input;
  ReadInput(Child(root, "Input"), input);
  d.nonlinear = Attribute(cases, "nonlinear") == "1";
  d.comment = Text(Child(cases, "Comment"));
  static const char* const kForces[3] = {"X", "Y", "Z"};
  for (Node c : Children(cases, "Load-Case")) {
    LoadCaseResult lc;
    lc.number = Integer(Attribute(c, "number"));
    lc.name = Attribute(c, "name");
    Node loads = Child(c, "Loads");
    for (std::size_t a = 0; a < 3; ++a) {
      lc.loads[a] = AxisValue(loads, "Force", kForces[a]);
      lc.loads[a + 3] = AxisValue(loads, "Moment", kForces[a]);
    }
    lc.loads[6] = AxisValue(loads, "Position", "X");
    lc.loads[7] = AxisValue(loads, "Position", "Y");
    lc.results = input;
    lc.results.declared_increments = Integer(Attribute(Child(c, "No-Of-Increments"), "number"));
    ReadCaseIncrements(c, lc.results);
    if (Node stop = Child(c, "Capacity-Reached")) lc.capacity_increment = Integer(Attribute(stop, "increment"));
    lc.results.ok = true;
    d.cases.push_back(std::move(lc));
  }
  d.ok = true;
  return d;
}

PileGeometry::PileGeometry(const PileInput& pile, int elements) {
  const double a = pile.rake_x * 3.14159265358979 / 180.0;
  const double e = pile.rake_y * 3.14159265358979 / 180.0;
  ca = std::cos(a);
  sa = std::sin(a);
  ce = std::cos(e);
  se = std::sin(e);
  vertical = ca * ce;
  along_free = vertical > 0 ? pile.free_length / vertical : pile.free_length;
  h = elements > 0 ? pile.length / elements : 0.0;
}

std::array<double, 6> HeadLoadsExternal(const PileGeometry& g, const ElementResult& head) {
  const double x = head.force[0], y = head.force[1], a = head.force[2];
  return {g.ca * x - g.sa * a, g.ce * y - g.se * a, g.ca * g.ce * a + g.sa * x + g.se * y,
          head.moment[0],      head.moment[1],      head.moment[2]};
}

std::array<double, 4> HeadMovementExternal(const RunResults& r, const IncrementResult& inc, std::size_t pile) {
  const double dx = r.piles[pile].x - r.centre_x;
  const double dy = r.piles[pile].y - r.centre_y;
  const double about_x = inc.cap_move[3], about_y = inc.cap_move[4];
  // A rotation about Y turns in the XZ plane and lifts a pile at +dx; about X, in YZ with dy.
  const auto second_order = [](double t) { return std::sqrt(std::max(0.0, t * t - std::sin(t) * std::sin(t))); };
  return {inc.cap_move[0] - second_order(about_y) * dx, inc.cap_move[1] - second_order(about_x) * dy,
          inc.cap_move[2] + std::sin(about_y) * dx + std::sin(about_x) * dy, inc.cap_move[5]};
}

PileExtremes ExtremesOf(const PileResult& pile, const PileGeometry& g) {
  PileExtremes x;
  bool first = true;
  for (const ElementResult& e : pile.elements) {
    const double depth = e.number == 0 ? -g.along_free * g.vertical : g.depth(e.depth);
    const double m = std::hypot(e.moment[0], e.moment[1]);
    if (!e.toe && (first || m > x.moment)) {
      x.moment = m;
      x.moment_depth = depth;
    }
    if (first || std::fabs(e.force[2]) > std::fabs(x.axial)) {
      x.axial = e.force[2];
      x.axial_depth = depth;
    }
    first = false;
  }
  return x;
}

}  // namespace quellon_cli
