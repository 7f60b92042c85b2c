// Line directives as others than C compilers want them.
#pragma once

#include <string>
#include <string_view>

#include "qnpp/preprocessor.h"

namespace qnpp::build {

enum class LineDirectiveStyle {
  Hash,  ///< `#line 7 "name"`, as qnpp writes them.
  Gnu,   ///< `# 7 "name" 1`, as compilers of the GNU family write them: 1 begins an included file, 2 ends one.
  Glsl,  ///< `#line 7 2`: files have numbers, the source has 0.
  None,
};

/// The output of qnpp with its line directives written in another style, Gnu or Glsl. `map` is that of the output.
///
/// In the style Glsl the directive at the beginning is left out: it says what holds anyway, and before "#version"
/// there may be none.
std::string restyle(std::string_view output, const LineMap& map, LineDirectiveStyle style);

/// Which number stands for which file in the style Glsl: a line `0 "name"` for each, with `lead` before it.
std::string fileTable(const LineMap& map, std::string_view lead);

}  // namespace qnpp::build
