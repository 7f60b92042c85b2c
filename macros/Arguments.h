// Arguments of a function-like invocation.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lexer/ByteSet.h"
#include "lexer/NormalizedTokens.h"
#include "lexer/TokenList.h"
#include "lexer/TokenStream.h"

namespace qnpp {

/// The arguments of one invocation. Each is normalized text, lexed into tokens. A token carries the hide set of the
/// token that it was read from, and that of the token behind the argument in addition; one that the text lexes into
/// anew, out of several, carries the sets of all of them.
///
/// The text is only built where somebody needs it. Between tokens of one source, normalizing the text and lexing it
/// again gives the tokens back, so they are kept as they are; `finish` finds out where that is not so (tokens of
/// different origin that merge, or a lone quote that finds a partner once line ends have become blanks) and builds the
/// text and lexes it there.
///
/// Spellings are kept alive by the stream's Hold, lists that tokens stand in by an EndedLists; see lexer/TokenStream.h.
class Arguments {
 public:
  std::size_t count() const { return count_; }

  /// Tokens of an argument: single tokens, one blank where white space stands between two, but for what comes out of a
  /// literal that falls apart. Valid until the arguments change.
  const TokenRange& tokens(std::size_t index) const {
    assert(index < count_);
    return arguments_[index].tokens;
  }

  /// The tokens that those of an argument are a part of; null when they are not normalized. Valid until the arguments
  /// change.
  NormalizedTokens* surroundings(std::size_t index);

  /// Appends the normalized text of an argument to `text`.
  void appendText(std::size_t index, std::string& text) const;

  /// The expansion of an argument, if it has been remembered; null otherwise.
  const TokenList* expanded(std::size_t index) const {
    assert(index < count_);
    return arguments_[index].isExpanded ? &arguments_[index].expanded : nullptr;
  }
  /// Remembers the expansion of an argument, taking the tokens out of the list.
  void rememberExpanded(std::size_t index, TokenList& tokens);

  /// Adds the current token of `stream`, of `kind`, to the argument being read.
  void add(TokenStream& stream, CppTokenKind kind);
  /// Adds the blank for the white space before the next token; it carries the hide sets of all of it.
  void addBlank(const HideSet& hideSet) {
    last_ = blankSpelling();
    collected_.append(last_, hideSet);
  }
  /// Ends the argument being read, at a token that carries `hideSet`. Lexes its text if need be.
  void finish(TokenStream& stream, HideSet hideSet);
  /// Adds an argument whose tokens stand in a list that stays until the EndedLists is released, already normalized;
  /// they are a part of `surroundings`, or of nothing that is known to be normalized if that is null.
  void addInPlace(TokenRange tokens, NormalizedTokens* surroundings);

  void clear();

 private:
  struct Argument {
    TokenRange tokens;
    bool isInPlace = false;                    // Not a part of the collected tokens.
    std::string_view text;                     // The normalized text, when it is more than the tokens' texts.
    NormalizedTokens* surroundings = nullptr;  // Null: `whole`, once it has been asked for.
    NormalizedTokens whole;                    // The argument's own tokens.
    bool isNormalized = true;
    bool isExpanded = false;
    TokenList expanded;

    void clear();
  };

  Argument& addArgument();
  void lexAnew(TokenStream& stream, std::string_view text);

  TokenList collected_;
  const Spelling* const* collectedAt_ = nullptr;  // Where the tokens of the arguments that are not in place stand.
  std::vector<Argument> arguments_;  // The first `count_` are in use; the others keep their memory for later ones.
  std::size_t count_ = 0;
  std::size_t begin_ = 0;                   // Where the argument being read begins.
  bool mustLex_ = false;                    // Its text may lex into other tokens.
  const Spelling* last_ = blankSpelling();  // Its last token; a blank, which merges with nothing, before there is one.
};

/// The ways in which two tokens may become one, each a bit: by the last byte of the first, and by the first of the
/// second.
struct MergingWays {
  static constexpr std::uint8_t kWord = 1;
  static constexpr std::uint8_t kComment = 128;
  std::array<std::uint8_t, 256> ofLast{};
  std::array<std::uint8_t, 256> ofFirst{};
};

inline constexpr MergingWays kMergingWays = [] {
  MergingWays ways;
  for (std::size_t byte = 0; byte < kWordBytes.size(); ++byte) {
    ways.ofLast[byte] = ways.ofFirst[byte] = kWordBytes[byte] ? MergingWays::kWord : 0;
  }
  unsigned way = MergingWays::kWord;
  const auto add = [&ways, &way](std::string_view last, std::string_view first) {
    way <<= 1U;
    for (const char byte : last) {
      ways.ofLast[static_cast<unsigned char>(byte)] |= static_cast<std::uint8_t>(way);
    }
    for (const char byte : first) {
      ways.ofFirst[static_cast<unsigned char>(byte)] |= static_cast<std::uint8_t>(way);
    }
  };
  add("#", "#");
  add("|", "|");
  add("&", "&");
  add("=!<>", "=");
  add("<", "<");
  add(">", ">");
  add("/", "/*");
  return ways;
}();
static_assert(kMergingWays.ofFirst['*'] == MergingWays::kComment);

/// Whether `token`, without white space before it, may become part of the token before it when both are lexed as one
/// text. May say yes too often. Asked for every token of an argument, hence the table.
inline bool mayMerge(const Spelling& before, const Spelling& token) {
  assert(before.size > 0 && token.size > 0);
  const unsigned ways = kMergingWays.ofLast[static_cast<unsigned char>(before.data[before.size - 1])] &
                        kMergingWays.ofFirst[static_cast<unsigned char>(token.data[0])];
  // No operator has more than two characters, and a literal is closed.
  return before.size == 1 ? ways != 0 : (ways & MergingWays::kWord) != 0;
}

/// Appends a string literal of the text of an argument. Within literals of the text backslashes are doubled, and every
/// double quote gets one; a quote of either sort that no backslash precedes switches between inside and outside.
void appendStringLiteral(std::string_view text, std::string& literal);

/// Whether a quote stands alone, so that it may open a literal in another place.
inline bool isLoneQuote(const Spelling& token) {
  return token.kind == TK_OTHER && (*token.data == '"' || *token.data == '\'');
}

}  // namespace qnpp
