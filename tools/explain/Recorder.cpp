#include "tools/explain/Recorder.h"

#include <algorithm>
#include <utility>

#include "lexer/CppFileScanner.h"
#include "lexer/NameTable.h"
#include "macros/CppMacro.h"

namespace qnpp {
namespace {

// The engine's numbers are the positions in our lists.
Id idOf(Origin origin) { return static_cast<Id>(origin); }
Origin originOf(std::size_t id) { return static_cast<Origin>(id); }

void append(std::vector<Fragment>& fragments, std::string_view text, Id origin) {
  if (fragments.empty() || fragments.back().origin != origin || fragments.back().isLineDirective) {
    fragments.push_back({std::string(text), origin});
  } else {
    fragments.back().text.append(text);
  }
}

std::vector<Fragment> fragmentsOf(SpellingRange tokens) {
  std::vector<Fragment> fragments;
  for (const Spelling* const token : tokens) {
    append(fragments, token->text(), idOf(token->origin));
  }
  return fragments;
}

bool opensConditional(CppTokenKind word) { return word >= TK_IF && word <= TK_IFNDEF; }

}  // namespace

std::string textOf(const std::vector<Fragment>& fragments, std::size_t begin, std::size_t end) {
  std::string text;
  for (std::size_t at = begin; at < end; ++at) {
    text.append(fragments[at].text);
  }
  return text;
}

std::string resultOf(const Explanation& explanation, const Expansion& expansion) {
  return textOf(explanation.contexts[expansion.context].result, expansion.resultBegin, expansion.resultEnd);
}

Recorder::Recorder(std::string sourcePath, LineRange range, std::size_t mostSteps)
    : sourcePath_(std::move(sourcePath)), range_(range), mostSteps_(mostSteps) {
  told_.files.emplace_back();
  told_.definitions.emplace_back();
  told_.contexts.emplace_back();
  told_.expansions.emplace_back();
  told_.pieces.emplace_back();
  told_.keptNames.emplace_back();
  told_.directives.emplace_back();
  told_.lines.emplace_back();
  told_.messages.emplace_back();
}

// ---- Places ----

SourcePlace Recorder::place() const {
  if (openFiles_.empty()) {
    return {};
  }
  const OpenFile& file = openFiles_.back();
  return {file.file, subtractLines(stream_->file()->line(), file.renumbered)};
}

// Whether the line was asked for.
bool Recorder::isWanted(const Line& line) const {
  return isInSource_ ? line.place.line <= range_.last && line.endLine >= range_.first : isInWantedFile_;
}

// False when as much has been written down as may be: what happens from now on is left out.
bool Recorder::hasRoom() {
  if (told_.isCut) {
    return false;
  }
  if (told_.expansions.size() + told_.pieces.size() + told_.keptNames.size() + told_.output().size() >= mostSteps_) {
    told_.isCut = true;
    told_.cutAt = place();
  }
  return !told_.isCut;
}

// ---- Lines ----

Recorder::Mark Recorder::mark() const {
  return {told_.contexts.size(), told_.expansions.size(), told_.pieces.size(),  told_.keptNames.size(),
          told_.lines.size(),    told_.messages.size(),   told_.output().size()};
}

void Recorder::forgetFrom(const Mark& mark) {
  told_.contexts.resize(mark.contexts);
  told_.expansions.resize(mark.expansions);
  told_.pieces.resize(mark.pieces);
  told_.keptNames.resize(mark.keptNames);
  told_.lines.resize(mark.lines);
  told_.messages.resize(mark.messages);
  told_.contexts.front().result.resize(mark.output);
}

// How far the line that is being read has come, which may be several lines of the source.
void Recorder::measureLine() {
  const SourcePlace end = place();
  line_.endLine = end.file == line_.place.file ? std::max(line_.place.line, end.line - 1) : line_.place.line;
}

// The line that is being read ends: it is kept if it was asked for.
void Recorder::endLine() {
  if (!isInLine_) {
    return;
  }
  isInLine_ = false;
  measureLine();
  addSkipped();
  if (!isWanted(line_) || wasCut_) {
    forgetFrom(lineMark_);
    return;
  }
  line_.outputEnd = told_.output().size();
  line_.expansionsEnd = static_cast<Id>(told_.expansions.size());
  line_.namesEnd = static_cast<Id>(told_.keptNames.size());
  line_.messagesEnd = static_cast<Id>(told_.messages.size());
  told_.lines.push_back(line_);
}

void Recorder::addSkipped() {
  if (!line_.isSkipped) {
    return;
  }
  std::vector<SkippedLines>& skipped = told_.skipped;
  if (!skipped.empty() && skipped.back().file == line_.place.file && line_.place.line <= skipped.back().last + 1) {
    skipped.back().last = line_.endLine;
  } else {
    skipped.push_back({line_.place.file, line_.place.line, line_.endLine});
  }
}

void Recorder::lineBegan(bool isSkipped) {
  endLine();
  // Tokens of an expansion that goes on over the line end refer to what was written down before.
  if (stream_->isInFile()) {
    lineMark_ = mark();
  }
  line_ = Line();
  line_.place = place();
  line_.endLine = line_.place.line;
  line_.isSkipped = isSkipped;
  // The first line directive is written before any line is read.
  line_.outputBegin = told_.lines.size() == 1 ? 0 : told_.output().size();
  line_.expansionsBegin = static_cast<Id>(told_.expansions.size());
  line_.namesBegin = static_cast<Id>(told_.keptNames.size());
  line_.messagesBegin = static_cast<Id>(told_.messages.size());
  isInSource_ = openFiles_.size() == 1;
  isInWantedFile_ = openFiles_.back().isWanted;
  wasCut_ = told_.isCut;
  if (isSkipped) {
    const auto skipping = std::find_if(conditionals_.begin(), conditionals_.end(), [this](const OpenConditional& open) {
      return told_.directives[open.current].isSkipping;
    });
    line_.directive = skipping == conditionals_.end() ? 0 : skipping->current;
  }
  isInLine_ = true;
}

// Texts of different lines and of line directives stand apart.
void Recorder::written(std::string_view text, Origin origin) {
  std::vector<Fragment>& output = told_.contexts.front().result;
  if (text.empty() || (!isInLineDirective_ && !hasRoom()) || told_.isCut) {
    return;
  }
  const bool isContinued =
      !output.empty() && output.size() > line_.outputBegin && output.back().isLineDirective == isInLineDirective_ &&
      output.back().origin == idOf(origin) && !(isInLineDirective_ && output.back().text.ends_with("\"\n"));
  if (isContinued) {
    output.back().text.append(text);
  } else {
    output.push_back({std::string(text), idOf(origin), isInLineDirective_});
    extend(0, idOf(origin), output.size() - 1);
  }
  isInLineDirective_ = isInLineDirective_ && text != "\"\n";
}

void Recorder::addMessage(std::string text) {
  if (!told_.isCut) {
    told_.messages.push_back({std::move(text), place()});
  }
}

// ---- Directives ----

void Recorder::directiveBegan(CppTokenKind word) {
  Directive directive;
  directive.word = word;
  directive.place = line_.place;
  if (isConditional(word)) {
    directive.isInSkippedGroup = line_.isSkipped;
    if (opensConditional(word)) {
      const Id self = static_cast<Id>(told_.directives.size());
      conditionals_.push_back({self, self, 0, told_.lines.size(), told_.files.size()});
      directive.opener = self;
    } else if (conditionals_.size() > openFiles_.back().conditionalsBelow) {
      directive.opener = conditionals_.back().opener;
      directive.taken = conditionals_.back().taken;
    }
  }
  directive_ = static_cast<Id>(told_.directives.size());
  line_.directive = directive_;
  line_.isDirective = true;
  told_.directives.push_back(std::move(directive));
}

void Recorder::directiveEnded(bool isSkipping) {
  if (directive_ == 0) {
    return;
  }
  measureLine();  // Whether the line is kept, and what is told of its directive with it, depends on all of it.
  Directive& directive = told_.directives[directive_];
  directive.endLine = line_.endLine;
  directive.isSkipping = isSkipping;
  const Id ended = std::exchange(directive_, 0);
  if (!isConditional(directive.word)) {
    if (conditionals_.empty() && !isWanted(line_) && directive.entered == 0) {
      told_.directives.resize(ended);
    }
  } else if (directive.word == TK_ENDIF) {
    if (directive.opener != 0) {
      closeConditional();
    }
  } else if (directive.opener != 0) {
    OpenConditional& conditional = conditionals_.back();
    conditional.current = ended;
    conditional.taken = isSkipping || conditional.taken != 0 ? conditional.taken : ended;
  }
}

// What was told of a conditional is forgotten with it, unless a line that was kept lies in it.
void Recorder::closeConditional() {
  const OpenConditional conditional = conditionals_.back();
  conditionals_.pop_back();
  if (told_.lines.size() == conditional.linesBefore && told_.files.size() == conditional.filesBefore &&
      !isWanted(line_)) {
    told_.directives.resize(conditional.opener);
    line_.directive = 0;
  }
}

void Recorder::askedFor(std::string_view name, bool isDefined) {
  if (directive_ != 0) {
    told_.directives[directive_].asked.push_back({std::string(name), isDefined});
  }
}

void Recorder::operandRead(SpellingRange tokens) {
  const auto context = static_cast<Id>(told_.contexts.size());
  told_.contexts.push_back({Context::Kind::Operand, directive_, 0, {}});
  openContexts_.push_back(context);
  if (directive_ != 0) {
    Directive& directive = told_.directives[directive_];
    directive.context = context;
    directive.read = textOf(fragmentsOf(tokens));
  }
}

void Recorder::operandExpanded(SpellingRange tokens) {
  const Id context = openContexts_.back();
  openContexts_.pop_back();
  for (const Spelling* const token : tokens) {
    append(context, token->text(), idOf(token->origin));
  }
  if (directive_ != 0) {
    told_.directives[directive_].expanded = textOf(told_.contexts[context].result);
  }
}

void Recorder::evaluated(std::uint32_t value, bool isSigned, bool isOk) {
  if (directive_ != 0) {
    Directive& directive = told_.directives[directive_];
    directive.isEvaluated = true;
    directive.value = value;
    directive.isSigned = isSigned;
    directive.isOk = isOk;
  }
}

// ---- Files ----

void Recorder::lookedFor(std::string_view path, bool isFound) {
  if (isFound) {
    foundPath_ = path;
  }
  if (directive_ != 0) {
    told_.directives[directive_].lookUps.push_back({std::string(path), isFound});
  }
}

void Recorder::fileEntered() {
  SourceFile file;
  file.name = stream_->file()->fileName();
  const bool isSource = openFiles_.empty();
  file.path = isSource ? sourcePath_ : foundPath_;
  file.includedAt = isSource ? SourcePlace() : line_.place;
  file.include = directive_;
  const auto id = static_cast<Id>(told_.files.size());
  const bool isAskedFor = isSource || isWanted(line_);
  if (directive_ != 0) {
    told_.directives[directive_].entered = id;
  }
  told_.files.push_back(std::move(file));
  openFiles_.push_back({id, 0, conditionals_.size(), isAskedFor});
}

void Recorder::fileEnded() {
  while (conditionals_.size() > openFiles_.back().conditionalsBelow) {
    conditionals_.pop_back();
  }
  openFiles_.pop_back();
}

void Recorder::renumbered(std::int32_t line) {
  OpenFile& file = openFiles_.back();
  file.renumbered = addLines(file.renumbered, subtractLines(line, stream_->file()->line()));
}

// ---- Definitions ----

void Recorder::defined(const Name& name, const CppMacro& macro) {
  endDefinition(name.text(), true);
  Definition definition;
  definition.name = name.text();
  macro.parameters.forEach([&](std::string_view parameter) { definition.parameters.emplace_back(parameter); });
  definition.text = macro.text;
  definition.isFunctionLike = macro.functionLike;
  definition.place = openFiles_.empty() ? SourcePlace() : line_.place;
  definitions_[definition.name] = static_cast<Id>(told_.definitions.size());
  told_.definitions.push_back(std::move(definition));
}

void Recorder::undefined(const Name& name) { endDefinition(name.text(), false); }

void Recorder::endDefinition(std::string_view name, bool isReplaced) {
  const auto found = definitions_.find(std::string(name));
  if (found != definitions_.end()) {
    Definition& ended = told_.definitions[found->second];
    ended.endedAt = line_.place;
    ended.isReplaced = isReplaced;
    definitions_.erase(found);
  }
}

// ---- Expansion ----

Expansion* Recorder::find(Origin expansion) {
  const Id id = idOf(expansion);
  return id == 0 || id >= told_.expansions.size() ? nullptr : &told_.expansions[id];
}

// What comes from `origin` stands at `position` in the result of `context`: those of its expansions reach that far.
void Recorder::extend(Id context, Id origin, std::size_t position) {
  if (origin == 0 || origin >= told_.pieces.size()) {
    return;
  }
  Expansion& expansion = told_.expansions[told_.pieces[origin].expansion];
  if (expansion.context == context) {
    if (expansion.resultEnd <= expansion.resultBegin) {
      expansion.resultBegin = position;
    }
    expansion.resultEnd = position + 1;
  }
}

void Recorder::append(Id context, std::string_view text, Id origin) {
  if (told_.isCut) {
    return;
  }
  qnpp::append(told_.contexts[context].result, text, origin);
  extend(context, origin, told_.contexts[context].result.size() - 1);
}

// The expansion of macro `name` that a token comes out of, the innermost: on the way back through names that were
// replaced and through arguments.
Id Recorder::hiderOf(std::string_view name, Id origin) const {
  std::vector<Id> ways = {origin};
  for (std::size_t at = 0; at < ways.size() && at < 10000; ++at) {
    if (ways[at] == 0 || ways[at] >= told_.pieces.size()) {
      continue;
    }
    const Piece& piece = told_.pieces[ways[at]];
    const Expansion& expansion = told_.expansions[piece.expansion];
    if (expansion.name == name) {
      return piece.expansion;
    }
    for (const Id way : {piece.from, expansion.origin}) {
      if (way != 0 && std::find(ways.begin(), ways.end(), way) == ways.end()) {
        ways.push_back(way);
      }
    }
  }
  return 0;
}

void Recorder::nameKept(std::string_view name, Origin origin, Kept why) {
  if (!hasRoom()) {
    return;
  }
  keepName(name, why, idOf(origin), openContexts_.back());
}

void Recorder::keepName(std::string_view name, Kept why, Id origin, Id context) {
  const Id hider = why == Kept::Hidden ? hiderOf(name, origin) : 0;
  told_.keptNames.push_back({std::string(name), why, origin, context, hider, place(),
                             static_cast<Id>(told_.definitions.size()), static_cast<Id>(told_.expansions.size())});
}

Origin Recorder::expansionBegan(const Name& name, Origin origin) {
  if (!hasRoom()) {
    return {};
  }
  Expansion expansion;
  expansion.name = name.text();
  const auto definition = definitions_.find(expansion.name);
  expansion.definition = definition == definitions_.end() ? 0 : definition->second;
  expansion.isFunctionLike = name.macro->functionLike;
  expansion.origin = idOf(origin);
  expansion.context = openContexts_.back();
  expansion.place = place();
  expansion.endLine = expansion.place.line;
  if (stream_->isInFile()) {
    expansion.callEnd = stream_->file()->offset();
    expansion.nameBegin = expansion.callEnd - expansion.name.size();
  }
  const Id outer = expansion.origin < told_.pieces.size() ? told_.pieces[expansion.origin].expansion : 0;
  if (outer != 0 && told_.expansions[outer].context == expansion.context) {
    expansion.parent = outer;
  }
  expansion.resultBegin = expansion.resultEnd = told_.contexts[expansion.context].result.size();
  told_.expansions.push_back(std::move(expansion));
  return originOf(told_.expansions.size() - 1);
}

void Recorder::expansionFailed(Origin expansion, Kept why) {
  if (Expansion* const failed = find(expansion)) {
    failed->isKept = true;
    failed->why = why;
    failed->callEnd = failed->nameBegin + failed->name.size();
    if (hasRoom()) {
      keepName(std::string(failed->name), why, failed->origin, failed->context);
    }
  }
}

void Recorder::argumentRead(Origin expansion, SpellingRange tokens) {
  if (Expansion* const expanded = find(expansion)) {
    expanded->arguments.push_back({fragmentsOf(tokens), {}});
    if (stream_->isInFile()) {
      expanded->callEnd = stream_->file()->offset();
      expanded->endLine = place().line;
    } else {
      expanded->callEnd = 0;
    }
  }
}

void Recorder::argumentExpansionBegan(Origin expansion, std::uint32_t argument) {
  if (told_.isCut) {
    openContexts_.push_back(openContexts_.back());
    return;
  }
  openContexts_.push_back(static_cast<Id>(told_.contexts.size()));
  told_.contexts.push_back({Context::Kind::Argument, idOf(expansion), argument, {}});
  if (Expansion* const owner = find(expansion)) {
    owner->arguments[argument].contexts.push_back(openContexts_.back());
  }
}

void Recorder::argumentExpanded(Origin /*expansion*/, std::uint32_t /*argument*/, SpellingRange tokens) {
  const Id context = openContexts_.back();
  openContexts_.pop_back();
  for (const Spelling* const token : tokens) {
    append(context, token->text(), idOf(token->origin));
  }
}

Origin Recorder::made(Origin expansion, Part part, std::uint32_t argument, Origin from) {
  if (idOf(expansion) == 0 || !hasRoom()) {
    return {};
  }
  told_.pieces.push_back({part, idOf(expansion), argument, idOf(from)});
  return originOf(told_.pieces.size() - 1);
}

void Recorder::replaced(Origin expansion, SpellingRange tokens) {
  if (Expansion* const expanded = find(expansion)) {
    expanded->replacement = fragmentsOf(tokens);
  }
}

// ---- The end ----

Explanation Recorder::finish() {
  endLine();
  // A name's expansion begins after that of the name it came from, so the children of each have been seen before it.
  for (std::size_t id = told_.expansions.size(); --id > 0;) {
    const Expansion& child = told_.expansions[id];
    if (!child.isKept && child.definition != 0) {
      ++told_.definitions[child.definition].useCount;
    }
    if (child.parent != 0 && child.resultEnd > child.resultBegin) {
      Expansion& parent = told_.expansions[child.parent];
      const bool isEmpty = parent.resultEnd <= parent.resultBegin;
      parent.resultBegin = isEmpty ? child.resultBegin : std::min(parent.resultBegin, child.resultBegin);
      parent.resultEnd = std::max(parent.resultEnd, child.resultEnd);
    }
  }
  return std::move(told_);
}

}  // namespace qnpp
