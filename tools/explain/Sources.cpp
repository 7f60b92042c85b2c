#include "tools/explain/Sources.h"

#include <algorithm>
#include <fstream>
#include <memory>

#include "lexer/InputFile.h"

namespace qnpp {

std::vector<Sources::SourceLine> Sources::lines(Id file, std::int32_t first, std::int32_t last) const {
  std::vector<SourceLine> found;
  // Views ask for one line after the other, so reading goes on where it stopped.
  if (reached_.file != file || reached_.line > first) {
    reached_ = {file, 1, 0};
  }
  std::unique_ptr<std::istream> input;
  if (explanation_.files[file].path.empty()) {
    auto text = std::make_unique<InputText>();
    text->reset(std::string_view(textReadOnce_).substr(reached_.offset));
    input = std::move(text);
  } else {
    input = std::make_unique<std::ifstream>(explanation_.files[file].path, std::ios::binary);
    input->seekg(static_cast<std::streamoff>(reached_.offset));
  }
  std::uint64_t offset = reached_.offset;
  std::int32_t number = reached_.line;
  SourceLine line = {offset, ""};
  const auto endLine = [&] {
    if (number >= first && number <= last) {
      found.push_back(line);
    }
    line = {offset, ""};
    ++number;
  };
  bool isOpen = false;  // Bytes of a last line that has no end.
  while (number <= last) {
    const int byte = input->get();
    if (byte == std::istream::traits_type::eof()) {
      break;
    }
    const char character = static_cast<char>(byte);
    ++offset;
    isOpen = character != '\n' && character != '\r';
    if (!isOpen) {
      if (character == '\r' && input->peek() == '\n') {
        input->get();
        ++offset;
      }
      endLine();
      reached_ = {file, number, offset};
    } else if (number >= first) {
      line.text.push_back(character);
    }
  }
  if (isOpen) {
    endLine();
  }
  return found;
}

std::string Sources::slice(Id file, std::uint64_t begin, std::uint64_t end) const {
  const std::string& path = explanation_.files[file].path;
  if (path.empty()) {
    return begin < textReadOnce_.size() ? textReadOnce_.substr(begin, end - begin) : "";
  }
  std::ifstream input(path, std::ios::binary);
  input.seekg(static_cast<std::streamoff>(begin));
  std::string text(end - begin, '\0');
  input.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(0, input.gcount())));
  return text;
}

std::string Sources::written(const Expansion& expansion) const {
  if (expansion.callEnd > expansion.nameBegin && !expansion.isKept) {
    constexpr std::uint64_t kLongest = 10000;
    return slice(expansion.place.file, expansion.nameBegin,
                 std::min(expansion.callEnd, expansion.nameBegin + kLongest));
  }
  std::string text = expansion.name;
  if (expansion.isFunctionLike && !expansion.isKept) {
    text.push_back('(');
    for (const Expansion::Argument& argument : expansion.arguments) {
      text.append(&argument == &expansion.arguments.front() ? "" : ", ").append(textOf(argument.read));
    }
    text.push_back(')');
  }
  return text;
}

std::string onOneLine(std::string_view text) {
  std::string line;
  bool blankWaits = false;
  for (const char character : text) {
    if (character == ' ' || character == '\t' || character == '\n' || character == '\r' || character == '\f' ||
        character == '\v') {
      blankWaits = !line.empty();
      continue;
    }
    if (blankWaits) {
      line.push_back(' ');
      blankWaits = false;
    }
    line.push_back(character);
  }
  return line;
}

}  // namespace qnpp
