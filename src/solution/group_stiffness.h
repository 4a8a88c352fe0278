// The six by six stiffness of the whole group on its rigid cap, and the small dense
// inversion that turns it into the flexibility.
//
// Internal cap order: 1 vertical, 2 X, 3 rotation in XZ, 4 Y, 5 rotation in YZ,
// 6 twist. External order (GRMAT and the host): X, Y, Z, about X, about Y, about Z.
#pragma once

namespace quellon {

struct Engine;

// Internal axis of external axis a (1 to 6); 0 for any other a.
inline int ConvertAxis(int a) {
  static constexpr int kInternal[7] = {0, 2, 4, 1, 5, 3, 6};
  return a >= 1 && a <= 6 ? kInternal[a] : 0;
}

// GroupK(r, c), column-major in k[(r - 1) + 6 (c - 1)]: load r on the cap, at the centre
// of rotation and cap level, for a unit cap movement c. The head loads of each pile,
// which stand at its soil entry point in the pile's own axes, are resolved into the
// cap's axes and lifted through the free-standing length.
void AssembleGroupStiffness(const Engine& e, float k[36]);

// GRMAT(a, b) = GroupK(ConvertAxis(a), ConvertAxis(b)), both column-major 6 by 6.
void GroupStiffnessExternal(const float k[36], float grmat[36]);

// Gauss-Jordan inversion in place with complete pivoting of the n by n column-major
// matrix a of leading dimension lda. 1, or 0 when no pivot of magnitude 1e-20 or more
// is left (Project.ErrorCode 258) or a work vector can't be created; a is then spoilt.
int InvertMatrix(Engine& e, float* a, int n, int lda);

}  // namespace quellon
