// The forms in which findings are told.
#pragma once

#include <ostream>
#include <vector>

#include "tools/check/Check.h"

namespace qnpp {

void writeText(const std::vector<Finding>& findings, std::ostream& output);
/// An array with an object for each finding.
void writeJson(const std::vector<Finding>& findings, std::ostream& output);
/// SARIF 2.1.0, as code scanners read it.
void writeSarif(const std::vector<Finding>& findings, std::ostream& output);

}  // namespace qnpp
