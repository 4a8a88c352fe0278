// The check of a model before anything is assembled: what would make the numerics of a
// run undefined (a division by zero, the logarithm of zero, a power of a negative
// strength, a point load at the free surface) or meaningless (a pile in no ground, soil
// without stiffness, a Poisson's ratio outside its physical range), and every number
// that isn't one. The setters store what the host passes without a word, so this is the
// one place where such a model is met; the text model reader refuses much of it earlier,
// with its own messages.
#pragma once

namespace quellon {

struct Engine;

// 1 when the model can be analysed. 0 when it is refused: one error, naming the pile,
// layer or element and the value, has gone to the host's message function and the LOG,
// and Project.ErrorCode holds the id of the message table where the model file reader
// has one for the same fault. Needs the soil entry points: call it after
// PrepareGroupGeometry and before the first soil matrix is built. Reads the model only.
int CheckModel(Engine& e);

}  // namespace quellon
