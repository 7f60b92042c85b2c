#include "driver/ProgramOptions.h"

#include <array>

namespace qnpp {
namespace {

// The first row matters to the parser beyond its own option: only words that begin like it may follow `-I` with a dash.
constexpr std::array<OptionEntry, 8> kOptions{{
    {"I ", 1, "missing path name for '-I' option number %d"},
    {"D_", 1, "missing macro for '-D' option number %d"},
    {"o", 1, "missing output file name for '-o' option"},
    {"s", 1, "no source name provided to '-s' option"},
    {"v", OptionEntry::kTakesNoValue, ""},
    {"-version", OptionEntry::kTakesNoValue, ""},
    {"h", OptionEntry::kTakesNoValue, ""},
    {"-help", OptionEntry::kTakesNoValue, ""},
}};

constexpr std::string_view kOptionsHelp =
    "  -I<dir>        : add a directory for searching include files.\n"
    "  -D<name>       : define preprocessor symbol.\n"
    "  -o <name>      : output file. If not specified, writes to standard out.\n"
    "  -s <name>      : source name. Overrides source file name in messages. Useful when reading from standard in.\n"
    "  -v, --version  : show version number.\n"
    "  -h, --help     : show this help text.\n";

}  // namespace

std::span<const OptionEntry> programOptions() { return kOptions; }

std::string_view programOptionsHelp() { return kOptionsHelp; }

}  // namespace qnpp
