#include "model_check.h"

#include "quellon.h"

namespace quellon_cli {

ModelReview ReviewModel(const std::string& model) {
  ModelReview review;
  review.accepted = QuellonCheckModel() == 1;
  review.findings = TakeEngineFindings(model);
  return review;
}

void PrintErrors(Console& c, const std::string& model, const std::vector<Finding>& errors) {
  for (const Finding& f : errors) c.print((f.where.empty() ? model : f.where) + ": " + f.text);
}

}  // namespace quellon_cli
