#include "macros/MacroExpander.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string_view>
#include <utility>

#include "lexer/Shortcuts.h"
#include "macros/ArgumentReading.h"

namespace qnpp {

namespace {

bool isFunctionLike(const Name* name) { return name != nullptr && name->macro != nullptr && name->macro->functionLike; }

}  // namespace

/// The replacement of an invocation.
struct MacroExpander::Substitution {
  explicit Substitution(TokenStream& stream) : ended(stream) {}

  const Replacement* replacement = nullptr;
  std::size_t step = 0;  ///< The next of its steps.
  Arguments arguments;
  TokenStream::EndedLists ended;           ///< While the arguments were read: their tokens may stand there.
  HideSet hideSet;                         ///< Of the invocation, the macro's name included.
  TokenList result;                        ///< What has been made so far.
  [[no_unique_address]] Origin expansion;  ///< Its number for the observer.

  void reset() {
    arguments.clear();
    ended.release();
    hideSet = HideSet();
    result.clear();
  }
};

/// The expansion of a list: the argument of the substitution below it, or what expandTokenList was given.
struct MacroExpander::ListExpansion {
  std::optional<TokenStream::Closed> source;  ///< The list that is read.
  TokenList result;                           ///< What has been collected so far.
  std::uint64_t eventCount = 0;               ///< When it was begun.

  void reset() {
    source.reset();
    result.clear();
  }
};

MacroExpander::MacroExpander(const LexerContext& context, NameTable& names, TokenStream& stream, CppMacroTable& macros,
                             MessageSink& messages)
    : context_(context),
      names_(names),
      stream_(stream),
      messages_(messages),
      macros_(macros),
      predefined_(macros, names),
      direct_(macros, names, predefined_, stream, context.budget) {}

// Expansions are left only where the run was ended early. Each closed source is above those of the expansions that wait
// for it.
MacroExpander::~MacroExpander() {
  while (!expansions_.empty()) {
    expansions_.pop_back();
  }
}

// ---- In text ----

void MacroExpander::expandInText() {
  assert(expansions_.empty());
  Name* const name = stream_.name();
  if (name == nullptr || name->macro == nullptr || stream_.isHidden(*name)) {
    trace().kept(name == nullptr || name->macro == nullptr ? Observer::Kept::NoMacro : Observer::Kept::Hidden);
    context_.output.write(stream_.text(), stream_.origin());
  } else if (name->macro->functionLike) {
    expandFunctionLikeInText(*name);
  } else if (!kShortcuts) {
    pushObjectLike(*name, HideSet(stream_.hideSets().with(stream_.hideSet(), *name)));
  } else {
    expandObjectLikeInText(*name);
  }
}

void MacroExpander::expandObjectLikeInText(Name& name) {
  if (name.finalText.isLasting()) {
    context_.budget.spendOnExpansion(1);
    context_.output.write(name.finalText.text());
    return;
  }
  const TokenStream::Hold hold(stream_);
  if (name.isRefreshed) {
    if (!expandDirectly(name)) {
      pushObjectLike(name, HideSet(stream_.hideSets().with(stream_.hideSet(), name)));
    }
    return;
  }
  const SpellingRange tokens = macros_.replacementOf(name).tokens();
  if (stream_.isInFile() && findFinalText(name, names_, stream_.blocks())) {
    context_.budget.spendOnExpansion(1 + tokens.size());
    context_.output.write(name.finalText.text());
    return;
  }
  // What would be read back and written is written right here. A name at the end may find its "(" behind the list.
  const std::size_t written = writeLeadingText(tokens, context_.output);
  if (written < tokens.size() && !isFunctionLike(tokens.back()->name) && expandDirectly(name, written)) {
    return;
  }
  context_.budget.spendOnExpansion(1 + tokens.size());
  if (written < tokens.size()) {
    stream_.push({tokens.subspan(written), stream_.hideSets().with(stream_.hideSet(), name)});
  }
}

std::optional<std::string_view> MacroExpander::expand(Name& name, const char*& at) {
  const TokenStream::Hold hold(stream_);
  const char* const behind = name.macro->functionLike ? direct_.expandInCondition(name, at) : nullptr;
  if (behind == nullptr) {
    return std::nullopt;
  }
  at = behind;
  return direct_.text();
}

bool MacroExpander::expandDirectly(Name& name, std::size_t firstToken) {
  const auto expand = [&](BytesAhead& bytes) { return direct_.expand(name, bytes, firstToken); };
  if (!stream_.passAhead(expand)) {
    return false;
  }
  context_.output.write(direct_.text());
  return true;
}

void MacroExpander::expandFunctionLikeInText(Name& name) {
  const TokenStream::Hold hold(stream_);
  if (kShortcuts && expandDirectly(name)) {
    return;
  }
  // A copy, since the cache's answer holds until its next question only.
  const HideSet hideSet(stream_.hideSets().with(stream_.hideSet(), name));
  predefined_.refresh(name, *stream_.file());
  std::unique_ptr<Substitution> substitution = spareSubstitutions_.take(stream_);
  const Origin origin = stream_.origin();
  substitution->expansion = trace().begin(name);
  std::string skipped;
  const Invocation invocation = readInvocation(
      *name.macro, *substitution, [this, &skipped] { skipped.append(stream_.text()); }, [] { return false; });
  if (invocation == Invocation::Complete) {
    beginSubstitution(std::move(substitution), name, hideSet);
    run();
    return;
  }
  if (invocation == Invocation::None) {
    context_.output.write(skipped);  // The white space behind the name comes out before it.
  }
  context_.output.write(name.text(), origin);
  spareSubstitutions_.give(std::move(substitution));
}

// The macro's tokens become the current source.
void MacroExpander::pushObjectLike(const Name& name, const HideSet& hideSet) {
  const TokenStream::Hold hold(stream_);
  const Origin expansion = trace().begin(name);
  if (!name.isRefreshed) {
    const SpellingRange tokens = trace().body(macros_.replacementOf(name).tokens(), expansion);
    context_.budget.spendOnExpansion(1 + tokens.size());
    trace().replaced(expansion, tokens);
    stream_.push({tokens, hideSet});
    return;
  }
  predefined_.refresh(name, *stream_.file());
  TokenList tokens;
  stream_.storedTextLexer().lex(name.macro->text, [&](CppTokenKind kind, std::string_view text) {
    tokens.append(trace().body(stream_.spell(kind, text), expansion), hideSet);
  });
  trace().replaced(expansion, tokens.spellings());
  stream_.push(tokens);
}

// ---- Both sorts of expansions ----

// Behind a function-like name: reads the white space that follows, of which each token is handed to `take`, and behind
// a "(" the arguments, unless `isHidden` says then that the name stays as it is.
template <typename Take, typename IsHidden>
MacroExpander::Invocation MacroExpander::readInvocation(const CppMacro& macro, Substitution& substitution, Take take,
                                                        IsHidden isHidden) {
  const TokenStream::EndedLists::Collecting collecting(substitution.ended);
  CppTokenKind kind = stream_.peek();
  for (; isWhiteSpace(kind); kind = stream_.peek()) {
    stream_.get();
    take();
  }
  if (kind != '(') {
    trace().fail(substitution.expansion, Observer::Kept::NoParenthesis);
    return Invocation::None;
  }
  if (isHidden()) {
    trace().fail(substitution.expansion, Observer::Kept::Hidden);
    return Invocation::None;
  }
  if (!collectArguments(stream_, messages_, macro, substitution.arguments)) {
    trace().fail(substitution.expansion, Observer::Kept::BadArguments);
    return Invocation::Malformed;
  }
  trace().argumentsRead(substitution.expansion, substitution.arguments);
  return Invocation::Complete;
}

// Works on the innermost expansion until none is left.
void MacroExpander::run() {
  while (!expansions_.empty()) {
    if (auto* const substitution = std::get_if<std::unique_ptr<Substitution>>(&expansions_.back())) {
      substitute(**substitution);
    } else {
      expandList(**std::get_if<std::unique_ptr<ListExpansion>>(&expansions_.back()));
    }
  }
}

// ---- Substitution ----

// Puts the substitution of an invocation of `name`, whose arguments have been read, on the stack.
void MacroExpander::beginSubstitution(std::unique_ptr<Substitution> substitution, const Name& name,
                                      const HideSet& hideSet) {
  substitution->replacement = &macros_.replacementOf(name);
  context_.budget.spendOnExpansion(1 + substitution->replacement->tokens().size());
  substitution->step = 0;
  substitution->hideSet = hideSet;
  expansions_.emplace_back(std::move(substitution));
}

// Carries out the steps that are left, up to one that has to wait for an expanded argument.
void MacroExpander::substitute(Substitution& substitution) {
  const Replacement& replacement = *substitution.replacement;
  const auto& steps = replacement.steps();
  while (substitution.step < steps.size()) {
    const Replacement::Step& step = steps[substitution.step++];
    switch (step.kind) {
      case Replacement::Step::Kind::Tokens:
        substitution.result.append(
            trace().body(replacement.tokens().subspan(step.begin, step.end - step.begin), substitution.expansion),
            substitution.hideSet);
        break;
      case Replacement::Step::Kind::Expand:
        if (!appendExpanded(substitution, step.begin)) {
          trace().argumentBegan(substitution.expansion, step.begin);
          beginListExpansion(substitution.arguments, step.begin);
          return;
        }
        break;
      case Replacement::Step::Kind::Stringize:
        joinedText_.clear();
        stringize(substitution.arguments, step.begin, joinedText_);
        spendOnText();
        substitution.result.append(trace().literal(stream_.spell(joinedText_), substitution.expansion, step.begin),
                                   substitution.hideSet);
        break;
      case Replacement::Step::Kind::Join:
        substitution.result.append(trace().joined(join(substitution, step.begin, step.end), substitution.expansion),
                                   substitution.hideSet);
        break;
      case Replacement::Step::Kind::Misuse:
        messages_.report(Replacement::misuse(step));  // What has been made so far is the result.
        break;
    }
  }
  finishSubstitution();
}

// The result becomes the current source: of the list expansion that met the invocation, or of the text.
void MacroExpander::finishSubstitution() {
  auto finished = std::move(std::get<std::unique_ptr<Substitution>>(expansions_.back()));
  expansions_.pop_back();
  TokenList& result = finished->result;
  trace().replaced(finished->expansion, result.spellings());
  std::size_t passed = 0;  // What would be read back and written, or collected, is so right here.
  if (kShortcuts && expansions_.empty()) {
    passed = writeLeadingText(result.spellings(), context_.output);
  } else if (kShortcuts) {
    ListExpansion& reader = *std::get<std::unique_ptr<ListExpansion>>(expansions_.back());
    TokenRange tokens = result.all();
    tokens.unite(stream_.hideSets());
    passed = reader.result.appendLeadingSettled(tokens, names_.generation(), stream_.hideSets());
  }
  if (passed < result.size()) {
    stream_.push(result, passed);
  }
  spareSubstitutions_.give(std::move(finished));
}

// Appends the expansion of an argument if it is known: because there is no macro's name in it, or from an earlier step.
bool MacroExpander::appendExpanded(Substitution& substitution, std::uint32_t argument) {
  const TokenRange& tokens = substitution.arguments.tokens(argument);
  const auto isMacro = [](const Spelling* token) { return token->name != nullptr && token->name->macro != nullptr; };
  if (kShortcuts && std::none_of(tokens.tokens.begin(), tokens.tokens.end(), isMacro)) {
    context_.budget.spendOnExpansion(tokens.tokens.size());
    substitution.result.append(tokens, substitution.hideSet, stream_.hideSets());
    return true;
  }
  const TokenList* const expanded = substitution.arguments.expanded(argument);
  if (expanded != nullptr) {
    context_.budget.spendOnExpansion(expanded->size());
    substitution.result.append(expanded->all(), substitution.hideSet, stream_.hideSets());
  }
  return expanded != nullptr;
}

void MacroExpander::stringize(const Arguments& arguments, std::uint32_t argument, std::string& literal) {
  argumentText_.clear();
  arguments.appendText(argument, argumentText_);
  appendStringLiteral(argumentText_, literal);
}

// The texts of the operands from `begin` to before `end` as one element, which never merges with its neighbours.
const Spelling* MacroExpander::join(const Substitution& substitution, std::size_t begin, std::size_t end) {
  const Replacement& replacement = *substitution.replacement;
  joinedText_.clear();
  for (std::size_t index = begin; index < end; ++index) {
    const Replacement::Item& operand = replacement.operands()[index];
    switch (operand.kind) {
      case Replacement::Item::Kind::Token:
        joinedText_.append(replacement.tokens()[operand.index]->text());
        break;
      case Replacement::Item::Kind::Parameter:
        substitution.arguments.appendText(operand.index, joinedText_);
        break;
      case Replacement::Item::Kind::Literal:
        stringize(substitution.arguments, operand.index, joinedText_);
        break;
    }
  }
  spendOnText();
  return stream_.spell(joinedText_);
}

// The text that "#" or "##" has made.
void MacroExpander::spendOnText() { context_.budget.spendOnExpansion(joinedText_.size() / Budget::kBytesLikeAToken); }

// ---- List expansion ----

void MacroExpander::expandTokenList(TokenList& tokens, bool isCondition) {
  if (tokens.empty()) {
    return;
  }
  std::unique_ptr<ListExpansion> expansion = spareListExpansions_.take();
  expansion->source.emplace(stream_, tokens);
  expansions_.emplace_back(std::move(expansion));
  inCondition_ = isCondition;
  run();
  inCondition_ = false;
  std::swap(tokens, expandedList_);
  expandedList_.clear();
}

// Begins the expansion of an argument of the innermost substitution.
void MacroExpander::beginListExpansion(Arguments& arguments, std::uint32_t argument) {
  std::unique_ptr<ListExpansion> expansion = spareListExpansions_.take();
  expansion->eventCount = eventCount();
  expansion->source.emplace(stream_, arguments.tokens(argument), arguments.surroundings(argument));
  expansions_.emplace_back(std::move(expansion));
}

// Reads on to the end of the list, or to an invocation whose substitution has to be finished first.
void MacroExpander::expandList(ListExpansion& expansion) {
  TokenList& result = expansion.result;
  const std::size_t depth = expansions_.size();
  while (expansions_.size() == depth) {
    stream_.listSource().takeSettled(result);
    const CppTokenKind kind = stream_.get();
    if (kind == TK_END) {
      finishListExpansion();
      return;
    }
    if (kind == TK_DEFINED && inCondition_) {
      passDefinedOperand(result);
    } else if (isName(kind)) {
      expandNameInList(result);
    } else {
      collect(result);
    }
  }
}

void MacroExpander::collect(TokenList& result) { stream_.listSource().appendCurrent(result); }

// The result goes to the waiting substitution, or to the caller of expandTokenList.
void MacroExpander::finishListExpansion() {
  auto finished = std::move(std::get<std::unique_ptr<ListExpansion>>(expansions_.back()));
  expansions_.pop_back();
  finished->source.reset();
  if (expansions_.empty()) {
    std::swap(expandedList_, finished->result);
  } else {
    Substitution& substitution = *std::get<std::unique_ptr<Substitution>>(expansions_.back());
    const Replacement::Step& step = substitution.replacement->steps()[substitution.step - 1];  // It waits.
    context_.budget.spendOnExpansion(finished->result.size());
    trace().argumentExpanded(substitution.expansion, step.begin, finished->result);
    TokenRange expanded = finished->result.all();
    expanded.tokens = trace().argument(expanded.tokens, substitution.expansion, step.begin);
    substitution.result.append(expanded, substitution.hideSet, stream_.hideSets());
    // A parameter may stand in the replacement list again. Its argument is expanded anew for each place, which is the
    // same unless a message was given or a comment did more than be a blank: those things are repeated.
    if (kShortcuts && step.isWantedAgain && finished->eventCount == eventCount()) {
      substitution.arguments.rememberExpanded(step.begin, finished->result);
    }
  }
  spareListExpansions_.give(std::move(finished));
}

// The current token is a name of the list. It is collected, or its expansion is pushed or begun.
void MacroExpander::expandNameInList(TokenList& result) {
  CppTokenScanner& list = stream_.listSource();
  const Spelling* const spelling = list.spelling();
  Name* const name = spelling->name;
  if (name == nullptr || name->macro == nullptr) {
    trace().kept(Observer::Kept::NoMacro);
    collect(result);
    return;
  }
  if (list.isSurelyHidden(*name)) {
    trace().kept(Observer::Kept::Hidden);
    list.appendCurrent(result, true);  // And it stays hidden: a token's set only grows.
  } else if (name->macro->functionLike && !name->isRefreshed) {
    // Such a name mostly stays for want of a "(", so that is looked for before all of the hide set.
    expandFunctionLikeInList(*name, result);
  } else if (list.isHidden(*name)) {
    trace().kept(Observer::Kept::Hidden);
    list.appendCurrent(result, true);
  } else if (name->macro->functionLike) {
    predefined_.refresh(*name, *stream_.file());
    expandFunctionLikeInList(*name, result);
  } else {
    pushObjectLike(*name, HideSet(stream_.hideSets().with(list.hideSet(), *name)));
  }
}

void MacroExpander::expandFunctionLikeInList(Name& name, TokenList& result) {
  const Spelling* const spelling = stream_.listSource().spelling();
  const TokenRange token = stream_.listSource().current(spelling);
  std::unique_ptr<Substitution> substitution = spareSubstitutions_.take(stream_);
  substitution->expansion = trace().begin(name);
  TokenList skipped;
  const Invocation invocation = readInvocation(
      *name.macro, *substitution, [this, &skipped] { collect(skipped); },
      [&token, &name] { return token.isFirstHidden(name); });
  if (invocation == Invocation::Complete) {
    beginSubstitution(std::move(substitution), name, stream_.hideSets().with(token.firstHideSet(), name));
    return;
  }
  result.append(token, HideSet(), stream_.hideSets());
  if (invocation == Invocation::None) {
    result.append(skipped.all(), HideSet(), stream_.hideSets());
  }
  spareSubstitutions_.give(std::move(substitution));
}

// The current token is `defined` in a condition: its operand, with or without parentheses, is not expanded.
void MacroExpander::passDefinedOperand(TokenList& result) {
  const auto take = [this, &result] {
    stream_.get();
    collect(result);
  };
  const auto passBlanks = [this, &take] {
    while (isBlank(stream_.peek())) {
      take();
    }
  };
  collect(result);
  passBlanks();
  if (stream_.peek() == '(') {
    take();
    passBlanks();
  }
  if (isName(stream_.peek())) {
    take();
    trace().kept(Observer::Kept::OperandOfDefined);
  }
}

}  // namespace qnpp
