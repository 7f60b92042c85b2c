#include "tools/explain/Html.h"
namespace qnpp {
void writeHtml(const Explanation& explanation, const Sources& sources, std::ostream& output) {
  (void)explanation; (void)sources; (void)output;
}
}  // namespace qnpp
