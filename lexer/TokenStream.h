// The stack of token sources, read as one stream of tokens.
//
// Who owns the tokens of an expansion, and until when
//
// A token is a pointer to a spelling. Most spellings live as long as the run: those of names and of single characters.
// The others belong to a definition (the numbers and strings of its replacement list) or to the pool (what is made
// while macros are expanded: tokens of arguments, string literals, joined texts). The pool is a stack of bytes: what
// lies above a mark is given back in one step. Nobody outside of this class gives anything back; all that others can do
// is to keep things alive. These are the rules:
//
//  1. Every list has a mark. What the pool holds above it belongs to this source and those above it on the stack, and
//     is given back when the source has been read to its end: when more is asked for, or another source is pushed on
//     it, which takes over its share.
//  2. A token taken from a source may be kept beyond its source only under a `Hold`: arguments, operands, results under
//     way. While it lives, nothing that has been made since is given back, and a list that ends leaves its share of the
//     pool to the hold.
//  3. A source that is pushed under a hold takes over what the hold kept: its tokens may be among it. So an expansion's
//     result brings along what its arguments were made of.
//  4. A token that has been looked at counts as held: as long as a source is lexing a text anew, so that the token
//     looked at may be one that it has just made, nothing is given back; it goes with that source.
//  5. Tokens of an argument may stand in the list that they were read from, which may end before the invocation does.
//     Whoever reads the arguments has an `EndedLists` collect the lists that end meanwhile; they are not used again
//     before it is released.
//  6. The tokens of a definition that is replaced while they may be in use (`retire`) are freed when no list is on the
//     stack and nothing is held: none of them can be in use then.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "lexer/BlockStore.h"
#include "lexer/CppFileScanner.h"
#include "lexer/CppTokenScanner.h"
#include "lexer/HideSetCache.h"
#include "lexer/NameTable.h"
#include "lexer/Spares.h"
#include "lexer/SpellingPool.h"
#include "lexer/StoredTextLexer.h"
#include "lexer/TokenList.h"

namespace qnpp {

/// Token sources on a stack: reading means asking the current source, which is the top; when it ends, the one below
/// goes on. `#include` pushes a file, an expansion pushes a list of tokens, and so rescanning an expansion together
/// with what follows it is nothing but reading on.
class TokenStream {
 public:
  /// Is told when a file has been read to its end. Lists end silently.
  class Listener {
   public:
    /// The current file has ended; it is still the current one.
    virtual void fileEnded() = 0;
    /// The file that included it is the current one again.
    virtual void fileResumed() = 0;

   protected:
    ~Listener() = default;
  };

  /// The names, the listener and whatever the context refers to are borrowed and outlive the object.
  TokenStream(NameTable& names, const LexerContext& context, Listener& listener);
  TokenStream(const TokenStream&) = delete;
  TokenStream& operator=(const TokenStream&) = delete;
  ~TokenStream();

  // ---- Reading. A file must have been pushed. ----

  /// Kind of the next token, which stays; TK_END at the end of the outermost source, or of a closed one.
  CppTokenKind peek() {
    return readOn([](auto& source) { return source.peek(); });
  }
  /// Takes the next token and makes it the current one.
  CppTokenKind get() {
    return readOn([](auto& source) { return source.get(); });
  }
  /// Like `get`, but writes what of a text line comes out as it stands, see CppLexer::copyText.
  CppTokenKind copyText() {
    return readOn([](auto& source) { return source.copyText(); });
  }

  /// Text of the current token; valid until the next one is looked at or taken.
  std::string_view text() const {
    assert(current_ != nullptr);
    return current_->text();
  }
  /// The name table's entry for the current token, which is a name; null when no definition mentions it.
  Name* name();
  /// A spelling of the current token, whose kind is `kind`. Valid as long as the list that it stands in, or a Hold
  /// taken before.
  const Spelling* spelling(CppTokenKind kind) {
    return isInFile_ ? pool_.spell(kind, fileSource().text()) : listSource().spelling();
  }
  /// The hide set of the current token; after a look-ahead perhaps that of the next. Valid until the next question.
  const HideSet& hideSet() { return current_->hideSet(); }
  /// Whether `name` is in that set.
  bool isHidden(const Name& name) { return !isInFile_ && listSource().isHidden(name); }
  /// Appends the current token, of `kind`, with its hide set. Returns the `spelling`.
  const Spelling& appendCurrent(CppTokenKind kind, TokenList& list) {
    const Spelling* const appended = spelling(kind);
    if (isInFile_) {
      list.append(appended, HideSet());
    } else {
      listSource().appendCurrent(list);
    }
    return *appended;
  }

  /// Passes over blanks behind a token, which become the current one, if the current source is a file; perhaps not over
  /// all. Returns whether there were any.
  bool passBlanks() { return isInFile_ && fileSource().passBlanks(); }
  /// Skips blanks and looks at the token behind them.
  CppTokenKind skipBlanks();
  /// Skips line ends too; true when anything was skipped.
  bool skipWhiteSpace();
  /// Skips white space and takes the token behind it. Tells whether there was any, and adds its hide sets to `hideSet`.
  CppTokenKind getBehindWhiteSpace(bool& skipped, HideSet& hideSet);
  /// Takes tokens up to and including a line end, or up to the end of the input.
  void discardLine();

  /// At the start of a line: passes over whole lines of a skipped group and the word of a conditional directive, if the
  /// current source is a file; see CppLexer::skipWholeLines.
  CppTokenKind skipWholeLines(NestedConditionals& conditionals) {
    return isInFile_ ? fileSource().skipWholeLines(conditionals) : TK_END;
  }
  /// The same for empty lines, leading space and the beginning of any directive, see CppLexer::passLineStart.
  CppTokenKind passLineStart(std::string& leadingSpace) {
    return isInFile_ ? fileSource().passLineStart(leadingSpace) : TK_END;
  }
  /// Behind the word of a directive: whether the rest of the line may be read from the current source as it stands, see
  /// CppLexer::isRestPlain.
  bool isRestPlain() { return isInFile_ && fileSource().isRestPlain(); }

  /// Behind the word of a directive, if the current source is a file: see CppLexer.
  bool readMacroName(std::string_view& name) { return isInFile_ && fileSource().readMacroName(name); }
  bool readMacroHead(MacroHead& head) { return isInFile_ && fileSource().readMacroHead(head); }
  std::optional<std::string_view> readReplacementText(std::string& scratch) {
    return isInFile_ ? fileSource().readReplacementText(scratch) : std::nullopt;
  }
  /// In the middle of a line, if the current source is a file: see CppLexer::passAhead.
  template <typename Pass>
  bool passAhead(Pass pass) {
    return isInFile_ && fileSource().passAhead(pass);
  }
  bool passLineEnd() { return isInFile_ && fileSource().passLineEnd(); }
  /// Passes over blanks and one more token, normally a line end.
  void takeLineEnd() {
    if (!passLineEnd()) {
      skipBlanks();
      get();
    }
  }

  /// Whether the current source is a file.
  bool isInFile() const { return isInFile_; }
  /// Whether a Hold lives.
  bool isHolding() const { return held_.has_value(); }
  /// The innermost file, whichever source is the current one; null before the first is pushed.
  CppFileScanner* file() const { return files_.empty() ? nullptr : files_.back(); }
  /// The files that are being read, from the outermost on.
  const std::vector<CppFileScanner*>& files() const { return files_; }
  /// The current source, if it is a list.
  CppTokenScanner& listSource() {
    assert(!isInFile_ && current_ != nullptr);
    return static_cast<CppTokenScanner&>(*current_);
  }

  // ---- Pushing sources ----

  /// A scanner to be opened and pushed.
  std::unique_ptr<CppFileScanner> makeFile() { return spareFiles_.take(context_); }
  void pushFile(std::unique_ptr<CppFileScanner> file);
  /// Makes tokens the current source. The first takes them out of `tokens`, reads from position `first` on and leaves
  /// an empty list; those of the second are borrowed and stay until the source has ended.
  void push(TokenList& tokens, std::size_t first = 0);
  void push(const TokenRange& tokens);

  /// Makes tokens the current source and sets the enclosing ones aside: its end reads as the end of the input. The
  /// destructor drops it and brings the others back; of several the last that was made goes first. To be made under a
  /// Hold.
  class Closed {
   public:
    /// Takes the tokens out of `tokens`.
    Closed(TokenStream& stream, TokenList& tokens);
    /// Borrows `tokens`, which are a part of `surroundings`, see CppTokenScanner::read.
    Closed(TokenStream& stream, const TokenRange& tokens, NormalizedTokens* surroundings);
    Closed(const Closed&) = delete;
    Closed& operator=(const Closed&) = delete;
    ~Closed();

   private:
    TokenStream& stream_;
    std::size_t enclosingFloor_;
  };

  // ---- Keeping things alive ----

  /// While one lives, spellings that are made or taken stay. When it ends, what no source has taken over is given back.
  /// One within another has no effect.
  class Hold {
   public:
    explicit Hold(TokenStream& stream);
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold();

   private:
    TokenStream& stream_;
    bool isOutermost_;
  };

  /// Lists that ended while something that stands in them was in use; they are used again for others once it is not.
  class EndedLists {
   public:
    explicit EndedLists(TokenStream& stream) : stream_(stream) {}
    EndedLists(const EndedLists&) = delete;
    EndedLists& operator=(const EndedLists&) = delete;
    ~EndedLists() {
      assert(stream_.ended_ != this);
      release();
    }

    /// While one lives, lists that end are collected here, where tokens that stand in them stay. To be made under a
    /// Hold; one at a time.
    class Collecting {
     public:
      explicit Collecting(EndedLists& lists);
      Collecting(const Collecting&) = delete;
      Collecting& operator=(const Collecting&) = delete;
      ~Collecting();

     private:
      TokenStream& stream_;
    };

    /// To be called when nothing that stands in one of the lists is in use any more.
    void release();

   private:
    friend class TokenStream;
    TokenStream& stream_;
    std::vector<std::unique_ptr<CppTokenScanner>> lists_;
  };

  /// Storage for definitions and the like, which lives as long as what has been retired.
  BlockStore& blocks() { return blocks_; }

  /// Takes over what tokens in use may belong to, a pointer that owns it, and frees it when none can be.
  template <typename Owner>
  void retire(Owner tokens) {
    if (hasLists() || held_) {
      retired_.emplace_back(std::move(tokens));
    }
  }

  // ---- Making spellings, which live as tokens do that are taken now ----

  /// The spelling of a text that may be any number of tokens, such as a joined text.
  const Spelling* spell(std::string_view text) { return pool_.spell(text); }
  /// The spelling of a token that a lexer has handed out.
  const Spelling* spell(CppTokenKind kind, std::string_view text) { return pool_.spell(kind, text); }
  /// A copy of `text`.
  std::string_view store(std::string_view text) { return pool_.store(text); }
  StoredTextLexer& storedTextLexer() { return storedTextLexer_; }
  const NameTable& names() const { return context_.names; }

  /// A macro of this name is being defined, see SpellingPool.
  void nameBecameKnown(Name& name) { pool_.nameBecameKnown(name); }

  HideSetCache& hideSets() { return hideSets_; }

  // ---- Being watched; see Observer ----

  /// Calls `tell` with the observer of the run, if there is one.
  template <typename Tell>
  ToldOf<Tell> observe(Tell tell) const {
    return context_.output.observe(tell);
  }
  /// Where the current token comes from.
  Origin origin() const {
    if constexpr (kObserved) {
      return isInFile_ ? Origin() : static_cast<const CppTokenScanner&>(*current_).spelling()->origin;
    }
    return {};
  }
  /// In an observed run, copies of `tokens` that come from `originOf` each; else the tokens themselves.
  template <typename OriginOf>
  SpellingRange traced(SpellingRange tokens, [[maybe_unused]] OriginOf originOf) {
    if constexpr (kObserved) {
      const std::span<const Spelling*> copies = pool_.makeList(tokens.size());
      std::transform(tokens.begin(), tokens.end(), copies.begin(),
                     [&](const Spelling* token) { return pool_.copy(*token, originOf(*token)); });
      return copies;
    }
    return tokens;
  }
  const Spelling* traced(const Spelling* token, [[maybe_unused]] Origin origin) {
    if constexpr (kObserved) {
      return pool_.copy(*token, origin);
    }
    return token;
  }

 private:
  // A source, and the mark behind which the pool is its.
  struct Source {
    std::unique_ptr<CppScanner> scanner;
    SpellingPool::Mark mark;
  };

  CppFileScanner& fileSource() {
    assert(isInFile_);
    return static_cast<CppFileScanner&>(*current_);
  }
  // What `read` gives for the current source, or, where that ends, for the one below it.
  template <typename Read>
  CppTokenKind readOn(Read read) {
    assert(current_ != nullptr);
    for (;;) {
      const CppTokenKind kind = isInFile_ ? read(fileSource()) : read(listSource());
      if (kind != TK_END || !hasEnclosing()) {
        return kind;
      }
      popSource();
    }
  }

  bool hasEnclosing() const { return sources_.size() > floor_ + 1; }
  bool hasLists() const { return sources_.size() > files_.size(); }

  void popSource();
  void popFile();
  void removeList();
  SpellingPool::Mark dropExhaustedLists();
  void pushList(std::unique_ptr<CppTokenScanner> list, const SpellingPool::Mark& mark);
  void pushClosed(std::unique_ptr<CppTokenScanner> list);
  void giveBack(const SpellingPool::Mark& mark);
  void setCurrent(CppScanner& source);
  std::unique_ptr<CppTokenScanner> spareList() { return spareLists_.take(pool_, context_, hideSets_); }

  LexerContext context_;
  Listener& listener_;
  StoredTextLexer storedTextLexer_;
  SpellingPool pool_;
  HideSetCache hideSets_;

  std::vector<Source> sources_;  // The last is the current one; those below `floor_` are set aside.
  std::size_t floor_ = 0;
  CppScanner* current_ = nullptr;
  bool isInFile_ = false;
  std::vector<CppFileScanner*> files_;

  std::optional<SpellingPool::Mark> held_;  // Under a Hold: what lies behind it stays.
  EndedLists* ended_ = nullptr;             // Where lists go that end; null: they are used again.
  BlockStore blocks_;
  // Shared pointers remember how to free what they point at, whatever that is.
  std::vector<std::shared_ptr<const void>> retired_;
  Spares<CppTokenScanner> spareLists_;
  Spares<CppFileScanner> spareFiles_;
};

}  // namespace qnpp
