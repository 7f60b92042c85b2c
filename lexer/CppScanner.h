// Token sources: where tokens are read from.
#pragma once

#include <string_view>

#include "lexer/CppTokenKind.h"
#include "lexer/HideSet.h"
#include "lexer/NameTable.h"

namespace qnpp {

/// A source of tokens with one token of look-ahead. There are two: CppFileScanner reads a file, CppTokenScanner reads a
/// list of stored tokens. A source knows nothing of the others that wait on the stack of a TokenStream.
class CppScanner {
 public:
  CppScanner(const CppScanner&) = delete;
  CppScanner& operator=(const CppScanner&) = delete;
  virtual ~CppScanner() = default;

  /// Kind of the next token, which stays where it is.
  virtual CppTokenKind peek() = 0;
  /// Takes the next token and makes it the current one.
  virtual CppTokenKind get() = 0;
  /// The macro names that must not be expanded at the current token; always empty for a file. After a look-ahead the
  /// answer may already be that of the next token.
  virtual const HideSet& hideSet() = 0;

  bool isFile() const { return isFile_; }
  bool isTokenList() const { return !isFile_; }

  /// Text of the current token; valid until the next call of `peek` or `get`. The text of an end is not to be used.
  std::string_view text() const { return text_; }

 protected:
  explicit CppScanner(bool isFile) : isFile_(isFile) {}

  std::string_view text_;

 private:
  const bool isFile_;
};

}  // namespace qnpp
