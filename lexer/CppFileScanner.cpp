#include "lexer/CppFileScanner.h"

#include <cassert>
#include <utility>

namespace qnpp {

CppFileScanner::CppFileScanner(const std::string& name, std::unique_ptr<std::istream> input,
                               const LexerContext& context)
    : CppFileScanner(context) {
  open(name, std::move(input));
}

void CppFileScanner::begin(const std::string& name) {
  fileName_ = name;
  isRenamed_ = false;
  stamp_.reset();
  name_ = nullptr;
  includeLine_ = linesLookedAt_ = 0;
  hasPeek_ = false;
  atLineStart_ = true;
}

void CppFileScanner::open(const std::string& name, std::unique_ptr<std::istream> input) {
  begin(name);
  isOpen_ = input->good();
  if (isOpen_ && lexer_ == nullptr) {
    lexer_ = std::make_unique<CppLexer>(std::move(input), context_);
  } else if (isOpen_) {
    lexer_->restart(std::move(input));
  }
}

void CppFileScanner::open(const std::string& name, std::unique_ptr<FileBuffer> file) {
  begin(name);
  file_ = std::move(file);
  read(*file_);
}

void CppFileScanner::open(const std::string& name, std::shared_ptr<const FileText> text) {
  begin(name);
  fileText_ = std::move(text);
  textBuffer_.reset(**fileText_);
  read(textBuffer_);
}

void CppFileScanner::read(std::streambuf& bytes) {
  stream_.rdbuf(&bytes);
  isOpen_ = true;
  if (lexer_ == nullptr) {
    lexer_ = std::make_unique<CppLexer>(stream_, context_);
  } else {
    lexer_->restart(stream_);
  }
}

void CppFileScanner::reset() {
  isOpen_ = false;
  file_.reset();
  fileText_.reset();
  if (lexer_ != nullptr && !lexer_->close()) {
    lexer_.reset();
  }
}

void CppFileScanner::setFileName(std::string name) {
  if (!isRenamed_) {
    path_ = std::move(fileName_);
    isRenamed_ = true;
  }
  fileName_ = std::move(name);
}

CppTokenKind CppFileScanner::peek() {
  assert(!openFailed());
  if (!hasPeek_) {
    const std::int32_t line = lexer_->line();
    peekKind_ = lexer_->next();
    linesLookedAt_ = subtractLines(lexer_->line(), line);
    hasPeek_ = true;
  }
  return peekKind_ == TK_END && !atLineStart_ ? TK_NEWLINE : peekKind_;
}

CppTokenKind CppFileScanner::get() {
  assert(!openFailed());
  CppTokenKind kind = peekKind_;
  if (hasPeek_) {
    hasPeek_ = false;
    linesLookedAt_ = 0;
  } else {
    kind = lexer_->next();
  }
  name_ = nullptr;
  return taken(kind);
}

CppTokenKind CppFileScanner::copyText() {
  if (!kShortcuts || hasPeek_ || atLineStart_) {
    return get();
  }
  const CppTokenKind kind = lexer_->copyText();
  name_ = lexer_->name();
  return taken(kind);
}

CppTokenKind CppFileScanner::passLineStart(std::string& leadingSpace) {
  if (!kShortcuts || hasPeek_) {
    return TK_END;
  }
  const CppTokenKind kind = lexer_->passLineStart(leadingSpace);
  if (kind != TK_END) {
    text_ = lexer_->text();
    atLineStart_ = kind == TK_NEWLINE;
  }
  return isWhiteSpace(kind) ? TK_END : kind;
}

CppTokenKind CppFileScanner::taken(CppTokenKind kind) {
  text_ = lexer_->text();
  if (kind == TK_END) {
    if (atLineStart_) {
      return TK_END;
    }
    text_ = "\n";
    kind = TK_NEWLINE;
  }
  atLineStart_ = kind == TK_NEWLINE;
  return kind;
}

bool CppFileScanner::skipLine() {
  // With a token looked at, or nothing of the line taken yet, each token has to be seen: only then is it known whether
  // the end of the input still owes a line end.
  if (kShortcuts && !hasPeek_ && !atLineStart_) {
    static_cast<void>(lexer_->skipLine());
    atLineStart_ = true;
    return true;  // An input that has ended instead owed this line its line end.
  }
  CppTokenKind kind = get();
  while (kind != TK_NEWLINE && kind != TK_END) {
    kind = get();
  }
  return kind == TK_NEWLINE;
}

CppTokenKind CppFileScanner::skipWholeLines(NestedConditionals& conditionals) {
  if (!kShortcuts || hasPeek_) {
    return TK_END;
  }
  const CppTokenKind kind = lexer_->skipWholeLines(conditionals);
  if (kind != TK_END) {
    atLineStart_ = kind == TK_NEWLINE;
  }
  return isConditional(kind) ? kind : TK_END;
}

}  // namespace qnpp
