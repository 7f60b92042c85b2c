// Expansion of token lists, and substitution of arguments.
//
// A list is expanded by reading it: it becomes the current source, closed at its end, and what is read is collected.
// An object-like macro met on the way is pushed as a further source and read on. A function-like one is substituted:
// its replacement list is walked step by step, and a parameter that is neither stringized nor joined needs its argument
// expanded first, which is the expansion of a list again. Neither function calls the other: both are objects on a stack
// (see Expansion), and runExpansions works on the innermost until there is none left.
//
// It ends because every token that an expansion makes carries the names it came from in its hide set, and no name is
// expanded at a token that carries it.
#include <algorithm>
#include <utility>

#include "engine/Sources.h"
#include "lexer/Shortcuts.h"

namespace qnpp {

void CppPreprocessor::expandTokenList(TokenList& tokens) {
  if (tokens.empty()) {
    return;
  }
  const std::size_t base = expansions_.size();
  Expansion& expansion = pushExpansion();
  expansion.isSubstitution = false;
  expansion.floor = pushClosed(tokens);
  runExpansions(base);
  std::swap(tokens, expandedList_);
  expandedList_.clear();
}

void CppPreprocessor::runExpansions(std::size_t base) {
  while (expansions_.size() > base) {
    Expansion& innermost = *expansions_.back();
    if (innermost.isSubstitution) {
      substitute(innermost);
    } else {
      expandList(innermost);
    }
  }
}

Expansion& CppPreprocessor::pushExpansion() {
  if (spareExpansions_.empty()) {
    return *expansions_.emplace_back(std::make_unique<Expansion>());
  }
  expansions_.push_back(std::move(spareExpansions_.back()));
  spareExpansions_.pop_back();
  return *expansions_.back();
}

// Takes the innermost expansion, which is finished, off the stack.
std::unique_ptr<Expansion> CppPreprocessor::popExpansion() {
  std::unique_ptr<Expansion> finished = std::move(expansions_.back());
  expansions_.pop_back();
  return finished;
}

void CppPreprocessor::recycle(std::unique_ptr<Expansion> expansion) {
  if (spareExpansions_.size() < kMostSpares) {
    expansion->clear();
    spareExpansions_.push_back(std::move(expansion));
  }
}

// ---- Substitution ----

// Collects the arguments of an invocation whose "(" is the next token, and puts its substitution on the stack. Returns
// false, with the error reported, when the arguments are not in order.
bool CppPreprocessor::beginSubstitution(const Name& name, const HideSet& hideSet, std::size_t graveyardSize) {
  Expansion& expansion = pushExpansion();
  const bool complete = collectArguments(*name.macro, expansion.arguments);
  isCollecting_ = false;
  if (!complete) {
    recycle(popExpansion());
    return false;
  }
  expansion.isSubstitution = true;
  expansion.replacement = &replacementOf(name);
  expansion.step = 0;
  expansion.hideSet = hideSet;
  expansion.graveyardSize = graveyardSize;
  return true;
}

// Carries out the steps that are left, up to one that has to wait for an expanded argument.
void CppPreprocessor::substitute(Expansion& expansion) {
  const Replacement& replacement = *expansion.replacement;
  const auto& steps = replacement.steps();
  while (expansion.step < steps.size()) {
    const Replacement::Step& step = steps[expansion.step++];
    switch (step.kind) {
      case Replacement::Step::Kind::Tokens:
        expansion.result.append(replacement.tokens().subspan(step.begin, step.end - step.begin), expansion.hideSet);
        break;
      case Replacement::Step::Kind::Expand:
        if (!appendExpanded(expansion, step.begin)) {
          beginListExpansion(step.begin);
          return;
        }
        break;
      case Replacement::Step::Kind::Stringize:
        joinedText_.clear();
        stringize(expansion.arguments, step.begin, joinedText_);
        expansion.result.append(pool_.text(joinedText_), expansion.hideSet);
        break;
      case Replacement::Step::Kind::Join:
        expansion.result.append(join(replacement, expansion.arguments, step), expansion.hideSet);
        break;
      case Replacement::Step::Kind::Misuse:
        reportError(Replacement::misuse(step.begin));  // What has been made so far is the result.
        break;
    }
  }
  finishSubstitution(expansion);
}

// The result becomes the current source: of the list expansion that met the invocation, or of the run loop.
void CppPreprocessor::finishSubstitution(Expansion& expansion) {
  pushTokens(expansion.result);
  emptyGraveyard(expansion.graveyardSize);
  recycle(popExpansion());
}

// Appends the expansion of an argument if it is known: because there is no macro's name in it, or from an earlier step.
bool CppPreprocessor::appendExpanded(Expansion& expansion, std::uint32_t argument) {
  const SpellingRange tokens = expansion.arguments.tokens(argument);
  const bool isPlain = kShortcuts && std::none_of(tokens.begin(), tokens.end(), [](const Spelling* token) {
                         return token->name != nullptr && token->name->macro != nullptr;
                       });
  if (isPlain) {
    expansion.result.append(tokens, hideSets_.joined(expansion.arguments.hideSet(argument), expansion.hideSet));
    return true;
  }
  const TokenList* const expanded = expansion.findExpanded(argument);
  if (expanded != nullptr) {
    expansion.result.append(*expanded, expansion.hideSet, hideSets_);
  }
  return expanded != nullptr;
}

// A string literal of the argument's text. Within literals of the text backslashes are doubled, and every double quote
// gets one; a quote of either sort that no backslash precedes switches between inside and outside.
void CppPreprocessor::stringize(const Arguments& arguments, std::uint32_t argument, std::string& literal) {
  argumentText_.clear();
  arguments.appendText(argument, argumentText_);
  literal.push_back('"');
  bool inLiteral = false;
  char before = '\0';
  for (const char character : argumentText_) {
    if (character == '"' || (character == '\\' && inLiteral)) {
      literal.push_back('\\');
    }
    if ((character == '"' || character == '\'') && before != '\\') {
      inLiteral = !inLiteral;
    }
    literal.push_back(character);
    before = character;
  }
  literal.push_back('"');
}

// The texts of all operands as one element, which never merges with its neighbours.
const Spelling* CppPreprocessor::join(const Replacement& replacement, const Arguments& arguments,
                                      const Replacement::Step& step) {
  joinedText_.clear();
  for (std::uint32_t index = step.begin; index < step.end; ++index) {
    const Replacement::Item& operand = replacement.operands()[index];
    switch (operand.kind) {
      case Replacement::Item::Kind::Token:
        joinedText_.append(replacement.tokens()[operand.index]->text());
        break;
      case Replacement::Item::Kind::Parameter:
        arguments.appendText(operand.index, joinedText_);
        break;
      case Replacement::Item::Kind::Literal:
        stringize(arguments, operand.index, joinedText_);
        break;
    }
  }
  return pool_.text(joinedText_);
}

// ---- List expansion ----

// Begins the expansion of an argument of the innermost substitution.
void CppPreprocessor::beginListExpansion(std::uint32_t argument) {
  Arguments& arguments = expansions_.back()->arguments;
  const SpellingRange tokens = arguments.tokens(argument);
  const HideSet& hideSet = arguments.hideSet(argument);
  NormalizedTokens& surroundings = arguments.surroundings(argument);
  Expansion& expansion = pushExpansion();
  expansion.isSubstitution = false;
  expansion.argument = argument;
  expansion.eventCount = eventCount();
  expansion.floor = pushClosed(tokens, hideSet, surroundings);
}

// Reads on to the end of the list, or to an invocation whose substitution has to be finished first.
void CppPreprocessor::expandList(Expansion& expansion) {
  TokenList& result = expansion.result;
  while (expansions_.back().get() == &expansion) {
    listSource().takePlain(result);
    const CppTokenKind kind = nextToken();
    if (kind == TK_END) {
      finishListExpansion();
      return;
    }
    if (kind == TK_DEFINED && inCondition_) {
      passDefinedOperand(result);
    } else if (!isName(kind) || !expandNameInList(result)) {
      result.append(listSource().spelling(), current_->hideSet());
    }
  }
}

// The result goes to the waiting substitution, or to the caller of expandTokenList.
void CppPreprocessor::finishListExpansion() {
  std::unique_ptr<Expansion> finished = popExpansion();
  openSources(finished->floor);
  if (expansions_.empty() || !expansions_.back()->isSubstitution) {
    std::swap(expandedList_, finished->result);
  } else {
    Expansion& waiting = *expansions_.back();
    waiting.result.append(finished->result, waiting.hideSet, hideSets_);
    // A parameter may stand in the replacement list again. Its argument is expanded anew for each place, which is the
    // same unless a message was given or a comment lexed: those are repeated.
    if (kShortcuts && finished->eventCount == eventCount() && waiting.wantsAgain(finished->argument)) {
      waiting.keepExpanded(finished->argument, finished->result);
    }
  }
  recycle(std::move(finished));
}

// The current token is a name of the list. Returns false when it is not to be expanded and has to be collected as it
// is; otherwise its expansion has been pushed or begun, or it has been collected here.
bool CppPreprocessor::expandNameInList(TokenList& result) {
  const Spelling* const spelling = listSource().spelling();
  Name* const name = spelling->name;
  if (name == nullptr || name->macro == nullptr || current_->hideSet().contains(*name)) {
    return false;
  }
  const HideSet ownHideSet = current_->hideSet();
  const HideSet hideSet = hideSets_.with(ownHideSet, *name);
  if (!name->macro->functionLike) {
    pushObjectLike(*name, hideSet);
    return true;
  }
  refreshPredefined(*name);
  const std::size_t graveyardSize = graveyard_.size();
  isCollecting_ = true;
  TokenList skipped;
  for (CppTokenKind kind = peekToken(); isWhiteSpace(kind); kind = peekToken()) {
    nextToken();
    skipped.append(listSource().spelling(), current_->hideSet());
  }
  const bool isInvocation = peekToken() == '(';
  if (isInvocation && beginSubstitution(*name, hideSet, graveyardSize)) {
    return true;
  }
  isCollecting_ = false;
  result.append(spelling, ownHideSet);
  if (!isInvocation) {
    result.append(skipped, HideSet(), hideSets_);
  }
  emptyGraveyard(graveyardSize);
  return true;
}

// The current token is `defined` in a condition: its operand, with or without parentheses, is not expanded.
void CppPreprocessor::passDefinedOperand(TokenList& result) {
  const auto collect = [this, &result] { result.append(listSource().spelling(), current_->hideSet()); };
  const auto passBlanks = [this, &collect] {
    while (isBlank(peekToken())) {
      nextToken();
      collect();
    }
  };
  collect();
  passBlanks();
  if (peekToken() == '(') {
    nextToken();
    collect();
    passBlanks();
  }
  if (isName(peekToken())) {
    nextToken();
    collect();
  }
}

}  // namespace qnpp
