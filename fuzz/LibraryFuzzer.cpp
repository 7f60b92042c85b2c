// The public header, with callers that do their worst.
//
// An input is text. Its first line is the plan: five bytes of settings (see `settingsOf`), then a byte for each call of
// a function that the preprocessor was given, from the first again behind the last (see `Caller`). The rest is cut at
// each "\n@@\n": the first part is the source, the others are what the resolver finds, in turn.
//
// What must hold: no fault; a result that agrees with itself; the same result when the same object runs once more; and
// an object that is as good as new afterwards.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FuzzSupport.h"
#include "qnpp/preprocessor.h"
#include "tests/support/LimitedAllocation.h"

namespace qnpp::fuzz {
namespace {

struct Input {
  std::string_view settings;
  std::string_view plan;
  std::vector<std::string> parts;
};

constexpr std::size_t kSettings = 5;

Input parse(std::string_view text) {
  constexpr std::string_view kCut = "\n@@\n";
  Input input;
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  input.settings = line.substr(0, kSettings);
  input.plan = line.substr(input.settings.size());
  // Both runs of an input may stand on either side of a second.
  input.parts.emplace_back("#undef __DATE__\n#undef __TIME__\n");
  for (std::size_t cut = text.find(kCut); cut != std::string_view::npos; cut = text.find(kCut)) {
    input.parts.back().append(text.substr(0, cut + 1));
    text.remove_prefix(cut + kCut.size());
    input.parts.emplace_back();
  }
  input.parts.back().append(text);
  return input;
}

struct Settings {
  Limits limits;
  std::size_t allocations = SIZE_MAX;  // How many there may be.
  bool writesLineDirectives = true;
  bool hasLineMap = false;
  bool hasOutputSink = false;
  bool hasDiagnosticSink = true;
  bool isRead = false;  // The source comes from a reader.
  bool isCancelledBefore = false;
};

// Each byte is a number from 0 to 63, counted from "0". There are limits always: an input may stand for a work or an
// output without end.
Settings settingsOf(std::string_view bytes) {
  std::array<unsigned, kSettings> numbers{};
  std::transform(bytes.begin(), bytes.end(), numbers.begin(),
                 [](char byte) { return (static_cast<unsigned char>(byte) - unsigned{'0'}) % 64U; });
  const auto [depth, work, output, allocations, flags] = numbers;
  constexpr std::uint64_t kMost = std::uint64_t{1} << 19;
  Settings settings;
  settings.limits.includeDepth = depth == 0 ? 40 : depth;
  settings.limits.expansionWork = work == 0 ? kMost : std::uint64_t{1} << work % 19;
  settings.limits.outputBytes = output == 0 ? kMost : std::uint64_t{output} * output * output;
  settings.allocations = allocations == 0 ? SIZE_MAX : std::size_t{allocations} * allocations;
  settings.writesLineDirectives = (flags & 1U) == 0;
  settings.hasLineMap = (flags & 2U) != 0;
  settings.hasOutputSink = (flags & 4U) != 0;
  settings.hasDiagnosticSink = (flags & 8U) == 0;
  settings.isRead = (flags & 16U) != 0;
  settings.isCancelledBefore = (flags & 32U) != 0;
  return settings;
}

// The functions that the preprocessor is given. The plan says what each call of one does:
//
//   t  throws                                 b  throws std::bad_alloc
//   c  cancels the run, and goes on           n  finds nothing; ends the text
//   s  finds the source of the run once more  v  finds a text that differs from call to call; reads one byte
//   f  finds a directory; fails to read       e  finds an empty reader; claims to have read more than there was room
//   for r  finds a part, through a reader         any other byte does what should be done
class Caller {
 public:
  Caller(Preprocessor& preprocessor, const Input& input) : preprocessor_(preprocessor), input_(input) {}

  const std::string& output() const { return output_; }
  const std::string& messages() const { return messages_; }

  void startOver() {
    output_.clear();
    messages_.clear();
    calls_ = 0;
    thrown_ = false;
  }
  bool hasThrown() const { return thrown_; }

  Source sourceOf(std::size_t part, bool isRead) {
    const std::string& text = input_.parts[part];
    return isRead ? Source::ofReader(readerOf(text)) : Source::borrowing(text);
  }

  std::optional<Include> resolve(const IncludeRequest& request) {
    const std::string path = std::string(request.includerPath).substr(0, 20).append("/").append(request.name);
    switch (act()) {
      case 'n':
        return std::nullopt;
      case 's':
        return Include{"main", sourceOf(0, false)};
      case 'v':
        return Include{path, Source::ofText("#define V" + std::to_string(calls_) + "\n" + std::string(calls_, '\n'))};
      case 'f':
        return Include{path, Source::ofFile("/")};
      case 'e':
        return Include{path, Source::ofReader(nullptr)};
      case 'r':
        return Include{path, sourceOf(calls_ % input_.parts.size(), true)};
      default:
        return Include{std::string(request.name), sourceOf(calls_ % input_.parts.size(), false)};
    }
  }

  void take(const Diagnostic& diagnostic) {
    messages_.append(diagnostic.identifier).append(diagnostic.message).append(diagnostic.text);
    for (std::size_t at = 0; at < diagnostic.includeChainSize; ++at) {
      messages_.append(diagnostic.includeChain[at].file);
    }
    act();
  }

  void write(std::string_view block) {
    act();
    output_.append(block);
  }

 private:
  Reader readerOf(std::string_view text) {
    return [this, text](char* to, std::size_t size) mutable -> std::ptrdiff_t {
      const char action = act();
      if (action == 'f' || action == 'e') {
        return action == 'f' ? -1 : static_cast<std::ptrdiff_t>(size) + 1;
      }
      const std::size_t most = action == 'n' ? 0 : action == 'v' ? std::min(size, std::size_t{1}) : size;
      const std::size_t count = text.copy(to, most);
      text.remove_prefix(count);
      return static_cast<std::ptrdiff_t>(count);
    };
  }

  char act() {
    constexpr std::size_t kMostCalls = 2000;  // A file that includes itself twice is endless at any depth.
    const char action = input_.plan.empty() ? ' ' : input_.plan[calls_ % input_.plan.size()];
    ++calls_;
    if (action == 'c' || calls_ > kMostCalls) {
      preprocessor_.cancel();
    } else if (action == 't') {
      thrown_ = true;
      throw std::runtime_error("as planned");
    } else if (action == 'b') {
      thrown_ = true;
      throw std::bad_alloc();
    }
    return action;
  }

  Preprocessor& preprocessor_;
  const Input& input_;
  std::string output_;
  std::string messages_;
  std::size_t calls_ = 0;
  bool thrown_ = false;
};

void apply(const Settings& settings, Caller& caller, Preprocessor& preprocessor) {
  preprocessor.setResolver([&caller](const IncludeRequest& request) { return caller.resolve(request); });
  if (settings.hasDiagnosticSink) {
    preprocessor.setDiagnosticSink([&caller](const Diagnostic& diagnostic) { caller.take(diagnostic); });
  }
  if (settings.hasOutputSink) {
    preprocessor.setOutputSink([&caller](std::string_view block) { caller.write(block); });
  }
  preprocessor.setLimits(settings.limits);
  preprocessor.setLineDirectives(settings.writesLineDirectives);
  preprocessor.setLineMap(settings.hasLineMap);
}

void checkLineMap(const LineMap& map, std::string_view output) {
  std::uint64_t offset = 0;
  std::uint64_t line = 1;
  for (const LineMap::Entry& entry : map.entries) {
    require(offset <= entry.offset && entry.offset <= output.size(), "a line map follows the output");
    const std::string_view between = output.substr(offset, entry.offset - offset);
    line += static_cast<std::uint64_t>(std::count(between.begin(), between.end(), '\n'));
    offset = entry.offset;
    require(entry.outputLine == line, "an entry knows its line of the output");
    require(entry.file < map.files.size(), "an entry has a file");
  }
}

void check(const Result& result, const Settings& settings, const Caller& caller) {
  const bool isWhole = result.status == Status::Clean || result.status == Status::Errors;
  const std::string& output = settings.hasOutputSink ? caller.output() : result.output;
  require((result.exception != nullptr) == (result.status == Status::CallbackFailed), "an exception has its status");
  require((result.limit != Limit::None) == (result.status == Status::LimitReached), "a limit has its status");
  require(!caller.hasThrown() || result.status == Status::CallbackFailed, "an exception goes before all else");
  require(!isWhole || result.hasErrors == (result.status == Status::Errors), "errors have their status");
  require(!isWhole || (result.endFile.empty() && result.endLine == 0 && result.endIncludes.empty()),
          "a whole run has no place of its end");
  require(output.size() <= settings.limits.outputBytes, "the output keeps to its limit");
  require(!settings.isCancelledBefore || !isWhole, "a cancelled run does not reach its end");
  require(settings.hasLineMap || result.lineMap.entries.empty(), "there is no line map unasked");
  checkLineMap(result.lineMap, output);
}

Result run(const Settings& settings, Caller& caller, Preprocessor& preprocessor) {
  caller.startOver();
  if (settings.isCancelledBefore) {
    preprocessor.cancel();
  }
  return preprocessor.run(caller.sourceOf(0, settings.isRead), "main");
}

void checkAsGoodAsNew(Preprocessor& preprocessor) {
  preprocessor.setResolver(nullptr);
  preprocessor.setDiagnosticSink(nullptr);
  preprocessor.setOutputSink(nullptr);
  preprocessor.setLimits({});
  preprocessor.setLineDirectives(true);
  const Result result = preprocessor.run(Source::borrowing("#define A x\nA A D\n"), "new");
  require(result.status == Status::Clean, "an object is as good as new after any run");
  require(result.output == "#line 1 \"new\"\n#line 2 \"new\"\nx x d\n", "a run begins afresh");
}

void test(std::string_view text) {
  const Input input = parse(text);
  show(input.parts.front());
  const Settings settings = settingsOf(input.settings);

  Preprocessor preprocessor;
  preprocessor.define("D=d");
  Caller caller(preprocessor, input);
  apply(settings, caller, preprocessor);
  if (settings.allocations != SIZE_MAX) {
    std::optional<Result> result;
    {
      const LimitedAllocation limited({.count = settings.allocations});
      result = run(settings, caller, preprocessor);
    }
    check(*result, settings, caller);
  } else {
    const Result first = run(settings, caller, preprocessor);
    check(first, settings, caller);
    const std::string output = caller.output();
    const std::string messages = caller.messages();
    const Result second = run(settings, caller, preprocessor);
    check(second, settings, caller);
    require(first.status == second.status && first.limit == second.limit, "two runs end alike");
    require(first.output == second.output && output == caller.output(), "two runs have the same output");
    require(messages == caller.messages(), "two runs have the same messages");
    require(first.endFile == second.endFile && first.endLine == second.endLine, "two runs end at the same place");
    require(first.dependencies.size() == second.dependencies.size(), "two runs have the same dependencies");
  }
  checkAsGoodAsNew(preprocessor);
}

}  // namespace
}  // namespace qnpp::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qnpp::fuzz::test(qnpp::fuzz::textOf(data, size));
  return 0;
}
