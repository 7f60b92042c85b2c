// Sizes are far beyond any real source, and beyond what the C++ program's own stack could hold: all nesting has to live
// in memory, and the time has to grow with the input and the output alone.
#include "HostileInputs.h"

#include <cstddef>
#include <string_view>

#include "tests/support/Text.h"

namespace qnpp::faults {
namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

std::string number(std::size_t value) { return std::to_string(value); }

std::string lineDirective(std::size_t line) { return "#line " + number(line) + " \"input.c\"\n"; }

std::string message(std::size_t line, std::string_view text) {
  return "input.c:" + number(line) + ": " + std::string(text) + ".\n";
}

// ---- Shapes ----

// The condition holds if the group behind it is taken.
HostileInput condition(const std::string& operand, bool holds, std::string messages = "", std::string status = "0") {
  return {"#if " + operand + "\nyes\n#endif\n", holds ? lineDirective(2) + "yes\n\n" : "\n\n", std::move(messages),
          std::move(status)};
}

// A text that means itself.
HostileInput plain(const std::string& text) { return {text, text, ""}; }

// Definitions, one to a line, and one line of text behind them, with what it becomes.
HostileInput expansion(const std::string& definitions, std::size_t count, const std::string& text,
                       const std::string& result) {
  return {definitions + text + '\n', lineDirective(count + 1) + result + '\n', ""};
}

// `head` 0, `head` 1, ... with what `body` makes of each, one definition to a line.
std::string definitions(std::size_t first, std::size_t count, const std::function<std::string(std::size_t)>& make) {
  std::string lines;
  for (std::size_t index = first; index < first + count; ++index) {
    lines += "#define " + make(index) + '\n';
  }
  return lines;
}

std::string list(std::size_t count, std::string_view separator, const std::function<std::string(std::size_t)>& item) {
  std::string text;
  for (std::size_t index = 0; index < count; ++index) {
    text += index > 0 ? separator : "";
    text += item(index);
  }
  return text;
}

HostileInput nestedCalls(std::size_t depth, const std::string& definition, const std::string& open,
                         const std::string& close, const std::string& result) {
  return expansion(definition + '\n', 1, repeat(depth, open) + 'x' + repeat(depth, close), result);
}

// Messages of one line each, all alike.
std::string messageForEach(std::size_t count, std::string_view text, std::size_t firstLine) {
  std::string messages;
  for (std::size_t index = 0; index < count; ++index) {
    messages += message(firstLine + index, text);
  }
  return messages;
}

// A table, however long: each input with what it means, computed beside it.
std::vector<NamedInput> makeInputs() {
  std::vector<NamedInput> inputs;
  const auto add = [&inputs](std::string name, std::function<HostileInput()> make) {
    inputs.push_back({std::move(name), std::move(make)});
  };

  // ---- Conditions ----

  add("nested_parentheses", [] { return condition(repeat(200'000, "(") + '1' + repeat(200'000, ")"), true); });
  add("parentheses_that_are_not_closed",
      [] { return condition(repeat(200'000, "(") + '1', false, repeat(200'000, message(1, "\")\" expected")), "1"); });
  add("unary_operators", [] { return condition(repeat(200'000, "!") + '1', true); });
  add("mixed_unary_operators", [] { return condition('!' + repeat(50'000, "!-~+") + '0', true); });  // ~0 is -1.
  add("conditions_in_the_first_branch",
      [] { return condition(repeat(100'000, "1?") + '1' + repeat(100'000, ":0"), true); });
  add("conditions_in_the_second_branch", [] { return condition(repeat(100'000, "0?0:") + '1', true); });
  add("a_sum_of_many", [] { return condition(repeat(200'000, "1+") + "0==200000", true); });
  add("operators_of_rising_strength", [] {
    // 0 || 1 && 1 | 0 ^ 0 & 1 == 1 < 1 << 0 + 1 * ( ... ): each level waits for all that follow.
    return condition(repeat(20'000, "0||1&&1|0^0&1==1<1<<0+1*(") + '1' + repeat(20'000, ")"), true);
  });
  add("a_long_number", [] { return condition(repeat(kMegabyte, "9") + "==0xFFFFFFFF", true); });
  add("a_long_character", [] {
    return condition('\'' + repeat(kMegabyte, "a") + "'==0x61616161", true,
                     message(1, "Too many characters in character literal"), "1");
  });
  add("a_long_escape", [] { return condition("'\\x" + repeat(kMegabyte, "0") + "41'==0x41", true); });
  add("defined_of_many", [] {
    return condition(list(100'000, "||", [](std::size_t at) { return "defined(a" + number(at) + ')'; }) + "||1", true);
  });
  add("calls_in_a_condition", [] {
    return HostileInput{"#define f(x) x\n#if " + repeat(50'000, "f(") + '1' + repeat(50'000, ")") + "\nyes\n#endif\n",
                        lineDirective(3) + "yes\n\n", ""};
  });
  add("names_of_functions_in_a_condition", [] {
    return HostileInput{"#define f(x) x\n#if" + repeat(200'000, " f") + "\nyes\n#endif\n", "\n\n",
                        message(2, "Invalid characters appear before a new-line in the preprocessor directive"), "1"};
  });

  // ---- Groups ----

  constexpr std::size_t kGroups = 100'000;
  add("nested_groups", [] {
    return HostileInput{repeat(kGroups, "#if 1\n") + "x\n" + repeat(kGroups, "#endif\n"),
                        lineDirective(kGroups + 1) + "x\n" + repeat(kGroups, "\n"), ""};
  });
  add("nested_skipped_groups", [] {
    // A skipped "#if" leaves nothing, an "#endif" leaves an empty line.
    return HostileInput{"#if 0\n" + repeat(kGroups, "#if 1\n") + repeat(kGroups, "#endif\n") + "#endif\nx\n",
                        repeat(kGroups + 1, "\n") + lineDirective(2 * kGroups + 3) + "x\n", ""};
  });
  add("groups_that_are_not_closed", [] {
    return HostileInput{repeat(kGroups, "#if 1\n"), "", message(kGroups + 1, "Unterminated \"#if\" conditional"), "1"};
  });
  add("many_branches", [] {
    return HostileInput{"#if 0\n" + repeat(kGroups, "#elif 0\n") + "#else\nx\n#endif\n",
                        "\n" + lineDirective(kGroups + 3) + "x\n\n", ""};
  });

  // ---- Calls ----

  constexpr std::size_t kCalls = 50'000;
  add("nested_calls", [] { return nestedCalls(kCalls, "#define f(x) x", "f(", ")", "x"); });
  add("nested_calls_with_blanks", [] { return nestedCalls(kCalls, "#define f(x) x", "f( ", " )", "x"); });
  add("nested_calls_over_lines", [] { return nestedCalls(kCalls, "#define f(x) x", "f\n(", ")", "x"); });
  add("nested_calls_with_a_second_argument", [] { return nestedCalls(kCalls, "#define f(x,y) x", "f(", ",1)", "x"); });
  add("nested_calls_in_a_second_argument", [] { return nestedCalls(kCalls, "#define f(x,y) y", "f(1,", ")", "x"); });
  add("nested_calls_that_keep_something", [] {
    // Not more than these: each level reads again what the level in it has left.
    constexpr std::size_t kLevels = 20'000;
    return nestedCalls(kLevels, "#define f(x) (x)", "f(", ")", repeat(kLevels, "(") + 'x' + repeat(kLevels, ")"));
  });
  add("nested_calls_that_drop_everything", [] { return nestedCalls(kCalls, "#define f(x)", "f(", ")", ""); });
  add("nested_calls_that_are_stringized", [] {
    return nestedCalls(kCalls, "#define f(x) #x", "f(", ")",
                       "\"" + repeat(kCalls - 1, "f(") + 'x' + repeat(kCalls - 1, ")") + '"');
  });
  add("nested_calls_that_are_joined", [] {
    // The joined text is read again, but its names are in the hide set.
    return nestedCalls(kCalls, "#define f(x) x##1", "f(", ")",
                       repeat(kCalls - 1, "f(") + 'x' + repeat(kCalls - 1, ")") + '1');
  });
  add("nested_calls_that_double",
      [] { return nestedCalls(17, "#define f(x) x x", "f(", ")", repeat((1U << 17U) - 1, "x ") + 'x'); });
  add("nested_calls_of_many_macros", [] {
    const auto define = [](std::size_t at) { return 'f' + number(at) + "(x) x"; };
    const std::string call = list(kCalls, "(", [](std::size_t at) { return 'f' + number(at); });
    return expansion(definitions(0, kCalls, define), kCalls, call + "(x)" + repeat(kCalls - 1, ")"), "x");
  });
  add("calls_that_are_not_closed", [] {
    return HostileInput{"#define f(x) x\n" + repeat(kCalls, "f(") + '\n', lineDirective(2) + 'f',
                        message(3, "The macro invocation is improperly terminated"), "1"};
  });
  add("a_call_that_is_not_closed_over_a_long_text", [] {
    return HostileInput{"#define f(x) x\nf(" + repeat(kMegabyte, "ab c+'d' \"e\"\n"), lineDirective(2) + 'f',
                        message(2 + kMegabyte, "The macro invocation is improperly terminated"), "1"};
  });
  add("calls_that_open_calls", [] {
    // Arguments are collected before anything in them is expanded, so no "r" ever closes the first call.
    return HostileInput{
        "#define f(x) x\n#define l f(\n#define r )\n" + repeat(kCalls, "l ") + repeat(kCalls, "r ") + '\n',
        lineDirective(4) + 'f', message(5, "The macro invocation is improperly terminated"), "1"};
  });
  add("a_call_behind_each_call", [] {
    // The "f" that a call leaves carries itself in its hide set, so the next parentheses are plain text.
    return expansion("#define f(x) x f\n", 1, "f(1)" + repeat(kCalls, "(2)"), "1 f" + repeat(kCalls, "(2)"));
  });
  add("names_of_functions", [] {
    // The white space behind a name that is not called comes out before it.
    return expansion("#define f(x) x\n", 1, repeat(200'000, "f ") + 'x', repeat(200'000, " f") + 'x');
  });
  add("a_name_of_a_function_before_many_lines", [] {
    return HostileInput{"#define f(x) x\nf" + repeat(10 * kMegabyte, "\n") + "x\n",
                        lineDirective(2) + repeat(10 * kMegabyte, "\n") + "fx\n", ""};
  });

  // ---- Chains of macros ----

  constexpr std::size_t kChain = 100'000;
  add("a_chain_of_names", [] {
    const auto define = [](std::size_t at) { return 'a' + number(at) + " a" + number(at - 1); };
    return expansion("#define a0 x\n" + definitions(1, kChain, define), kChain + 1, 'a' + number(kChain), "x");
  });
  add("a_chain_that_keeps_something", [] {
    const auto define = [](std::size_t at) { return 'a' + number(at) + " a" + number(at - 1) + '+'; };
    return expansion("#define a0 x\n" + definitions(1, kChain, define), kChain + 1, 'a' + number(kChain),
                     'x' + repeat(kChain, "+"));
  });
  add("a_chain_of_functions", [] {
    const auto define = [](std::size_t at) { return 'f' + number(at) + "(x) f" + number(at - 1) + "(x)"; };
    return expansion("#define f0(x) x\n" + definitions(1, kChain, define), kChain + 1, 'f' + number(kChain) + "(y)",
                     "y");
  });
  add("a_chain_of_functions_that_keep_something", [] {
    const auto define = [](std::size_t at) { return 'f' + number(at) + "(x) f" + number(at - 1) + "(x+)"; };
    // Not more than these: each link collects its argument anew, and that is longer each time.
    constexpr std::size_t kLinks = 5'000;
    return expansion("#define f0(x) x\n" + definitions(1, kLinks, define), kLinks + 1, 'f' + number(kLinks) + "(y)",
                     'y' + repeat(kLinks, "+"));
  });
  add("a_chain_in_an_argument", [] {
    // Each "+" carries another hide set; all of them are joined with that of "f".
    const auto define = [](std::size_t at) { return 'a' + number(at) + " a" + number(at - 1) + '+'; };
    return expansion("#define f(x) x\n#define a0 x\n" + definitions(1, kCalls, define), kCalls + 2,
                     "f(a" + number(kCalls) + ')', 'x' + repeat(kCalls, "+"));
  });
  add("a_chain_of_functions_and_arguments", [] {
    // Each link hands a name on that has been expanded by then and carries all the names so far.
    const auto define = [](std::size_t at) {
      return 'f' + number(at) + "(x) f" + number(at - 1) + "(x) a" + number(at);
    };
    return expansion("#define f0(x) x\n" + definitions(1, kCalls, define), kCalls + 1, 'f' + number(kCalls) + "(y)",
                     'y' + list(kCalls, "", [](std::size_t at) { return " a" + number(at + 1); }));
  });
  add("a_chain_of_empty_names", [] {
    const auto define = [](std::size_t at) { return 'a' + number(at) + " a" + number(at - 1) + " a" + number(at - 1); };
    return expansion("#define a0\n" + definitions(1, 16, define), 17, "x a16 y",
                     "x " + repeat((1U << 16U) - 1, " ") + " y");
  });
  add("many_definitions", [] {
    const auto define = [](std::size_t at) { return 'a' + number(at) + " x"; };
    return expansion(definitions(0, 500'000, define), 500'000, "a499999", "x");
  });
  add("one_definition_many_times", [] {
    const auto define = [](std::size_t at) { return "a " + number(at); };
    HostileInput input = expansion(definitions(0, kChain, define), kChain, "a", number(kChain - 1));
    input.messages = messageForEach(kChain - 1, "Warning: Macro \"a\" has an incompatible redefinition", 2);
    return input;
  });

  // ---- Arguments and parameters ----

  add("commas_within_parentheses", [] {
    const std::string commas = '(' + repeat(200'000, ",") + ')';
    return expansion("#define f(x) x\n", 1, "f(" + commas + ')', commas);
  });
  add("too_many_arguments", [] {
    // Found out at the second comma; what follows is plain text.
    return HostileInput{"#define f(x) x\nf(" + repeat(200'000, ",") + ")\n",
                        lineDirective(2) + 'f' + repeat(199'998, ",") + ")\n",
                        message(2, "A macro invocation has too many arguments"), "1"};
  });
  constexpr std::size_t kParameters = 20'000;
  add("many_parameters", [] {
    const auto parameter = [](std::size_t at) { return 'p' + number(at); };
    const auto backwards = [](std::size_t at) { return 'p' + number(kParameters - 1 - at); };
    return expansion("#define f(" + list(kParameters, ",", parameter) + ") " + list(kParameters, " ", backwards) + '\n',
                     1, "f(" + list(kParameters, ",", number) + ')',
                     list(kParameters, " ", [](std::size_t at) { return number(kParameters - 1 - at); }));
  });
  add("many_parameters_used_twice", [] {
    const auto parameter = [](std::size_t at) { return 'p' + number(at); };
    const std::string parameters = list(kParameters, ",", parameter);
    const std::string uses = list(kParameters, " ", parameter);
    return expansion("#define m 1\n#define f(" + parameters + ") " + uses + ' ' + uses + '\n', 2,
                     "f(" + repeat(kParameters - 1, "m,") + "m)", repeat(2 * kParameters - 1, "1 ") + '1');
  });
  add("one_parameter_used_often", [] {
    return expansion("#define m 1\n#define f(x)" + repeat(kMegabyte, " x") + '\n', 2, "f(m)",
                     repeat(kMegabyte - 1, "1 ") + '1');
  });
  add("one_parameter_many_times", [] {
    return expansion("#define f(" + repeat(kParameters - 1, "p,") + "p) p\n", 1,
                     "f(" + repeat(kParameters - 1, "1,") + "2)", "2");
  });
  add("a_chain_of_joins",
      [] { return expansion("#define f(x) x" + repeat(100'000, "##x") + '\n', 1, "f(a)", repeat(100'001, "a")); });
  add("joins_without_operands", [] {
    return HostileInput{"#define f(x) " + repeat(100'000, "##") + "\nf(a)\n", lineDirective(2) + '\n',
                        message(2, "'##' operator cannot be at the beginning of the replacement list"), "1"};
  });
  add("a_long_argument_stringized", [] {
    return expansion("#define f(x) #x\n", 1, "f(" + repeat(kMegabyte, "\"a\" ") + "z)",
                     "\"" + repeat(kMegabyte, "\\\"a\\\" ") + "z\"");
  });
  add("a_long_argument", [] {
    const std::string text = repeat(2 * kMegabyte, "a + ") + 'z';
    return expansion("#define f(x) x\n", 1, "f(" + text + ')', text);
  });
  add("quotes_in_an_argument", [] {
    // Escaped quotes open no literal: one that is nowhere closed is looked for once.
    const std::string text = repeat(kMegabyte, "\\\"") + 'z';
    return expansion("#define f(x) x\n", 1, "f(\"" + text + ')', '"' + text);
  });

  // ---- Long tokens and long lines ----

  constexpr std::size_t kLong = 30 * kMegabyte;
  add("a_long_name", [] { return plain(repeat(kLong, "x") + '\n'); });
  add("a_long_number_in_text", [] { return plain(repeat(kLong, "1") + '\n'); });
  add("a_long_string", [] { return plain('"' + repeat(kLong, "x") + "\"\n"); });
  add("a_long_string_of_escapes", [] { return plain('"' + repeat(kLong / 2, "\\\"") + "\"\n"); });
  add("a_long_character_in_text", [] { return plain('\'' + repeat(kLong, "x") + "'\n"); });
  add("a_long_string_that_is_not_closed", [] { return plain('"' + repeat(kLong, "x") + '\n'); });
  add("a_long_comment", [] { return HostileInput{"x/*" + repeat(kLong, "y") + "*/z\n", "x z\n", ""}; });
  add("a_long_comment_of_stars", [] { return HostileInput{"x/*" + repeat(kLong, "*") + "/z\n", "x z\n", ""}; });
  add("a_comment_over_many_lines", [] {
    return HostileInput{"/*" + repeat(kLong, "\n") + "*/z\n", repeat(kLong, "\n") + lineDirective(kLong + 1) + " z\n",
                        ""};
  });
  add("a_comment_that_is_not_closed", [] {
    return HostileInput{"x/*" + repeat(kLong, "y"), "x \n", "1: unterminated comment.\n"};
  });
  add("a_long_line_comment", [] { return HostileInput{"x//" + repeat(kLong, "y") + '\n', "x \n", ""}; });
  add("many_blanks", [] { return plain('x' + repeat(kLong, " ") + "y\n"); });
  add("a_line_of_blanks", [] { return HostileInput{repeat(kLong, "\t") + '\n', "\n", ""}; });
  add("many_continuations", [] { return plain('x' + repeat(kLong / 2, "\\\n") + "y\n"); });
  add("many_continuations_before_a_text", [] {
    const std::string continuations = repeat(kMegabyte, "\\\n");
    return HostileInput{continuations + "x\n", lineDirective(kMegabyte + 1) + continuations + "x\n", ""};
  });
  add("a_long_line", [] { return plain(repeat(4 * kMegabyte, "a+b*c") + '\n'); });
  add("many_lines", [] { return plain(repeat(kLong, "\n")); });
  add("bytes_of_zero", [] { return plain(std::string(kLong, '\0') + '\n'); });
  add("bytes_of_ones", [] { return plain(repeat(kLong, "\xFF") + '\n'); });
  add("escaped_quotes", [] { return plain('"' + repeat(5 * kMegabyte, "\\\"") + '\n'); });
  add("quotes", [] { return plain(repeat(5 * kMegabyte, "''") + '\n'); });
  add("escaped_single_quotes", [] { return plain('\'' + repeat(5 * kMegabyte, "\\'") + '\n'); });
  add("quotes_of_both_sorts", [] { return plain(repeat(kMegabyte, "\"\\'\\\"'\\q") + '\n'); });
  add("escaped_quotes_in_a_skipped_group", [] {
    return HostileInput{"#if 0\n\"" + repeat(5 * kMegabyte, "\\\"") + "\n#endif\n", "\n\n", ""};
  });
  add("marks_of_directives", [] { return plain(repeat(kMegabyte, "#") + '\n'); });  // "##" begins no directive.
  add("marks_of_directives_with_blanks", [] {
    return HostileInput{repeat(kMegabyte, "# ") + '\n', "",
                        message(1, "the indicated directive is not a recognized preprocessing directive"), "1"};
  });
  add("unknown_directives", [] {
    return HostileInput{
        repeat(100'000, "#x\n"), "",
        messageForEach(100'000, "the indicated directive is not a recognized preprocessing directive", 1), "1"};
  });

  // ---- Long operands of directives ----

  add("a_long_name_defined", [] {
    const std::string name = repeat(kLong, "x");
    return expansion("#define " + name + " y\n", 1, name, "y");
  });
  add("a_long_text_defined", [] {
    const std::string text = repeat(2 * kMegabyte, "y + ") + 'z';
    return expansion("#define x " + text + '\n', 1, "x", text);
  });
  add("a_long_file_name", [] {
    const std::string name = repeat(kMegabyte, "x");
    return HostileInput{"#include \"" + name + "\"\n", "", message(1, "Cannot open file: " + name), "1"};
  });
  add("a_long_message", [] {
    const std::string text = repeat(10 * kMegabyte, "x");
    return HostileInput{"#error " + text + '\n', "", message(1, "#error directive:  " + text), "1"};
  });
  add("a_long_pragma", [] {
    const std::string text = repeat(10 * kMegabyte, "x");
    return HostileInput{"#pragma " + text + '\n', "#pragma  " + text + '\n', ""};
  });
  add("many_pragmas", [] {
    return HostileInput{repeat(100'000, "_Pragma(\"x\")") + '\n', repeat(100'000, "\n#pragma x\n") + '\n', ""};
  });
  add("a_long_source_name", [] {
    const std::string name = repeat(kMegabyte, "x");
    return HostileInput{"#line 7 \"" + name + "\"\n__FILE__\n",
                        "#line 7 \"" + name + "\"\n#line 8 \"" + name + "\"\n\"" + name + "\"\n", ""};
  });
  add("a_long_line_number", [] {
    // The low 32 bits of a power of ten with so many zeros are zero.
    return HostileInput{"#line 1" + repeat(kMegabyte, "0") + "\nx\n", lineDirective(0) + lineDirective(1) + "x\n", ""};
  });
  return inputs;
}

}  // namespace

const std::vector<NamedInput>& hostileInputs() {
  static const std::vector<NamedInput> kInputs = makeInputs();
  return kInputs;
}

}  // namespace qnpp::faults
