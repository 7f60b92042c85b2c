// The explanation for other programs.
#pragma once

#include <ostream>

#include "tools/explain/Explanation.h"
#include "tools/explain/Sources.h"

namespace qnpp {

/// Writes everything as one JSON object, which share/qnpp/explain.schema.json describes.
void writeJson(const Explanation& explanation, const Sources& sources, std::ostream& output);

}  // namespace qnpp
