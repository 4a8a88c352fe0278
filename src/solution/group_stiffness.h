// The six by six stiffness of the whole group on its rigid cap, and the small dense
// inversion that turns it into the flexibility.
//
// The two orders of the cap's axes are in group_layout.h.
#pragma once

#include "engine/group_layout.h"
#include "engine/model.h"

namespace quellon {

struct Workspace;

// GroupK(r, c), column-major in k[(r - 1) + 6 (c - 1)]: load r on the cap, at the centre
// of rotation and cap level, for a unit cap movement c. The head loads of each pile,
// which stand at its soil entry point in the pile's own axes, are resolved into the
// cap's axes and lifted through the free-standing length.
void AssembleGroupStiffness(const Foundation& f, const Workspace& w, float k[36]);

// GRMAT(a, b) = GroupK(ConvertAxis(a), ConvertAxis(b)), both column-major 6 by 6.
void GroupStiffnessExternal(const float k[36], float grmat[36]);

// Gauss-Jordan inversion in place with complete pivoting of the n by n column-major
// matrix a of leading dimension lda. 1, or 0 when no pivot of magnitude 1e-20 or more
// is left; a is then spoilt.
int InvertMatrix(float* a, int n, int lda);

}  // namespace quellon
