// Streams over what a caller hands in.
#pragma once

#include <exception>
#include <istream>
#include <streambuf>
#include <string>
#include <utility>

#include "lexer/InputFile.h"
#include "qnpp/preprocessor.h"

namespace qnpp {

/// A stream over bytes in memory that it owns.
class OwnedText : public InputText {
 public:
  explicit OwnedText(std::string text) : text_(std::move(text)) { reset(text_); }

 private:
  const std::string text_;
};

/// A stream over a caller's function. What that throws is kept in `exception` and ends the run.
class ReaderInput : public std::istream {
 public:
  ReaderInput(Reader read, std::exception_ptr& exception) : std::istream(nullptr), buffer_(std::move(read), exception) {
    rdbuf(&buffer_);
  }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(Reader read, std::exception_ptr& exception) : read_(std::move(read)), exception_(exception) {}

   protected:
    std::streamsize xsgetn(char* to, std::streamsize size) override;

   private:
    Reader read_;
    std::exception_ptr& exception_;
  };

  Buffer buffer_;
};

}  // namespace qnpp
