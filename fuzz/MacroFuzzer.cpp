// The macro engine: definitions and invocations put together from a small vocabulary, so that nearly every input means
// something. Each byte of the input is one piece of source text.
//
// What must hold: no fault, and the same result whether the source arrives whole or in small pieces.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzSupport.h"

namespace {

// Few names and few parameters: most words of an input then meet a definition.
constexpr std::array<std::string_view, 64> kPieces = {
    "#define f(x) ",
    "#define g(x,y) ",
    "#define h() ",
    "#define a ",
    "#define b ",
    "#define c ",
    "#define f ",
    "#define ",
    "#undef ",
    "#if ",
    "#elif ",
    "#else\n",
    "#endif\n",
    "#ifdef ",
    "#ifndef ",
    "#line ",
    "#include ",
    "#pragma ",
    "#error ",
    "_Pragma",
    "__LINE__",
    "__FILE__",
    "defined ",
    "f",
    "f(",
    "f(x",
    "g",
    "g(",
    "h",
    "h()",
    "a",
    "b",
    "c",
    "x",
    "y",
    "a a",
    "if",
    "line",
    "(",
    ")",
    "()",
    ",",
    ", ",
    "#",
    "#x",
    "##",
    " ## ",
    "x##y",
    " ",
    "\n",
    "\\\n",
    "\t",
    "/**/",
    "/*\n*/",
    "/*",
    "// ",
    "\"",
    "\"\\\"\"",
    "\"s\"",
    "'",
    "\\",
    "1",
    "0",
    "+",
};

std::string sourceOf(const std::uint8_t* data, std::size_t size) {
  std::string source;
  for (std::size_t at = 0; at < size; ++at) {
    source += kPieces[data[at] % kPieces.size()];
  }
  return source;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string source = sourceOf(data, size);
  qnpp::fuzz::show(source);
  const qnpp::fuzz::RunResult whole = qnpp::fuzz::preprocess(source, qnpp::fuzz::kWhole);
  if (whole.isComplete) {
    qnpp::fuzz::requireEqual(whole, qnpp::fuzz::preprocess(source, qnpp::fuzz::smallPiece(source.size())),
                             "a source gives the same result whole and in small pieces");
  }
  return 0;
}
