// The engine at work on sources in memory, each made so that one kind of cost outweighs the others:
//
//   build/release/bench/qnpp_micro_benchmarks [--benchmark_filter=NAME] [--benchmark_repetitions=N]
//
// Reading, expanding and writing are timed; making the preprocessor and what is defined beforehand are not.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/CppPreprocessor.h"
#include "lexer/InputFile.h"
#include "tests/support/Text.h"

namespace {

using qnpp::repeat;

// Takes everything and keeps only how much it was.
class Host final : public qnpp::Host {
 public:
  std::int64_t written() const { return written_; }
  const std::string& messages() const { return messages_; }

  void write(std::string_view text) override { written_ += static_cast<std::int64_t>(text.size()); }
  void report(const qnpp::Report& report) override { messages_ += report.printed; }
  bool isResolver() const override { return false; }
  std::uint64_t callCount() const override { return 0; }
  bool isOutput(const qnpp::FileStamp& /*file*/) const override { return false; }
  std::optional<FoundFile> resolve(const qnpp::IncludeName&, const qnpp::FilePlace&, std::string_view) override {
    return std::nullopt;
  }
  void enter(const qnpp::Inclusion&, std::size_t) override {}
  void mark(qnpp::LineMark, const qnpp::FilePlace&, std::uint64_t) override {}

 private:
  std::int64_t written_ = 0;
  std::string messages_;
};

using Definitions = std::vector<std::pair<std::string, std::string>>;

// Runs `source` once per iteration. A source that the engine finds fault with, or that leaves nothing to write, does
// not measure what it was made for.
void preprocess(benchmark::State& state, const std::string& source, const Definitions& definitions = {}) {
  std::int64_t written = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto input = std::make_unique<qnpp::InputText>();
    input->reset(source);
    Host host;
    qnpp::Budget budget;
    auto preprocessor = std::make_unique<qnpp::CppPreprocessor>(host, budget);
    for (const auto& [name, text] : definitions) {
      preprocessor->macroTable().defineFromCommandLine(name, text);
    }
    state.ResumeTiming();

    static_cast<void>(preprocessor->openSource(std::move(input), "a.c", ""));
    preprocessor->run();

    state.PauseTiming();
    preprocessor.reset();
    written = host.written();
    if (!host.messages().empty()) {
      state.SkipWithError(("unexpected message: " + host.messages()).c_str());
      return;
    }
    if (written == 0) {
      state.SkipWithError("nothing was written");
      return;
    }
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
  state.counters["written"] = benchmark::Counter(static_cast<double>(written));
}

// Every kind of token, and no macro.
void lexing(benchmark::State& state) {
  const std::string lines =
      "  count = read_block(buffer, 0x40u, 1024) + table[index].width * 3;\n"
      "  if (left <= right && name[0] != '/') report(\"no such file: \", name);\n"
      "  total += (first << 4) | ~mask; // the rest is padding\n"
      "  for (i = 0; i < size; i++) { sum ^= 017L; } /* done */\n";
  preprocess(state, repeat(1000, lines));
}
BENCHMARK(lexing)->Unit(benchmark::kMillisecond);

// Names that are no macros, looked up in tables of different sizes.
void nameLookUp(benchmark::State& state) {
  std::string line;
  for (int i = 0; i < 12; ++i) {
    line += "name_" + std::to_string(i * 7919) + ' ';
  }
  Definitions definitions;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    definitions.emplace_back("MACRO_" + std::to_string(i), "1");
  }
  preprocess(state, repeat(2000, line + '\n'), definitions);
}
BENCHMARK(nameLookUp)->Arg(0)->Arg(1000)->Arg(100'000)->Unit(benchmark::kMillisecond);

// Arguments with parentheses in them, over several lines, and a body that uses none of them.
void argumentCollection(benchmark::State& state) {
  const std::string lines =
      "DROP(a + b, (c, (d, e)), f(g, h)\n"
      "     * 2, \"text\", index[3] - 'x')\n";
  preprocess(state, "#define DROP(a, b, c, d, e) .\n" + repeat(2000, lines));
}
BENCHMARK(argumentCollection)->Unit(benchmark::kMillisecond);

// Short arguments, and a body that uses each of them in every way.
void substitution(benchmark::State& state) {
  const std::string definition = "#define ALL(a, b) a + b - #a #b a##b b##a (a, b)\n";
  preprocess(state, definition + repeat(4000, "ALL(left, right) ALL(1, x y);\n"));
}
BENCHMARK(substitution)->Unit(benchmark::kMillisecond);

// A chain of macros, each naming the next: the hide set gains one name with each step.
void hideSetGrowth(benchmark::State& state) {
  const std::int64_t links = state.range(0);
  Definitions definitions;
  for (std::int64_t i = 0; i < links; ++i) {
    definitions.emplace_back("LINK_" + std::to_string(i), "LINK_" + std::to_string(i + 1));
  }
  preprocess(state, repeat(10, "LINK_0\n"), definitions);
  state.SetComplexityN(links);
}
BENCHMARK(hideSetGrowth)->RangeMultiplier(4)->Range(256, 65'536)->Complexity()->Unit(benchmark::kMillisecond);

// Two conditions, operators of all levels of precedence in them, both evaluated and both false.
void expressionEvaluation(benchmark::State& state) {
  const std::string lines =
      "#if defined(FEATURE) && (VERSION * 100 + 7) % 13 != 0x2au || !LEVEL\n"
      "first\n"
      "#elif LEVEL > 3 ? VERSION >> 2 == 'a' : ~VERSION & 0xff\n"
      "second\n"
      "#else\n"
      "third\n"
      "#endif\n";
  preprocess(state, "#define VERSION 312\n#define LEVEL 5\n" + repeat(2000, lines));
}
BENCHMARK(expressionEvaluation)->Unit(benchmark::kMillisecond);

// A null directive writes nothing, so that each line of text after one needs a line directive.
void lineDirectives(benchmark::State& state) { preprocess(state, repeat(20'000, "#\nx\n")); }
BENCHMARK(lineDirectives)->Unit(benchmark::kMillisecond);

// An argument of eight words, read again at each of 64 levels of nested invocations.
void tokenListRescanning(benchmark::State& state) {
  const std::string definitions =
      "#define AGAIN(x) AGAIN1(AGAIN1(AGAIN1(AGAIN1(x))))\n"
      "#define AGAIN1(x) AGAIN2(AGAIN2(AGAIN2(AGAIN2(x))))\n"
      "#define AGAIN2(x) SAME(SAME(SAME(SAME(x))))\n"
      "#define SAME(x) x\n"
      "#define WORD word\n";
  preprocess(state, definitions + repeat(200, "AGAIN(a WORD b WORD c WORD d WORD)\n"));
}
BENCHMARK(tokenListRescanning)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
