// Compiles requests, one a line, such as `play(int track);` to declarations in C. All files are in a map.
#include <qnpp/preprocessor.h>

#include <iostream>
#include <map>
#include <sstream>

const std::map<std::string, std::string, std::less<>> kFiles = {
    {"player.idl", "#include \"common.idl\"\nplay(int track);\n#if EDITION >= 2\nTOGGLE(shuffle)\n#endif\n"},
    {"common.idl", "#define TOGGLE(name) set_##name(int on);\n\nping(void);\n"},
    {"strange.idl", "ping(void);\n\nskip;\n"},
    {"broken.idl", "#include \"deeper.idl\"\n"},
    {"deeper.idl", "ping(void);\n#include \"nowhere.idl\"\n"},
    {"zero.idl", "ping(void);\n#if 1 / 0\n"},
    {"endless.idl", "#include \"endless.idl\"\n"}};

std::optional<qnpp::Include> resolve(const qnpp::IncludeRequest& request) {
  const auto found = kFiles.find(request.name);
  if (found == kFiles.end()) return std::nullopt;
  return qnpp::Include{found->first, qnpp::Source::borrowing(found->second)};
}

void show(const qnpp::Diagnostic& diagnostic) {
  std::cout << diagnostic.text;
  for (const qnpp::Place* place = diagnostic.includeChain;
       place != diagnostic.includeChain + diagnostic.includeChainSize; ++place) {
    std::cout << "  included from " << place->file << ':' << place->line << '\n';
  }
}

// The line map tells where a line of the preprocessed text comes from.
void compile(const qnpp::Result& result) {
  std::istringstream lines(result.output);
  std::string request;
  for (std::uint64_t number = 1; std::getline(lines, request); ++number) {
    if (request.empty()) continue;
    const bool isRequest = request.find('(') != std::string::npos;
    const qnpp::Place place = result.lineMap.find(number);
    std::cout << (isRequest ? "void " : "no request: ") << request << " // " << place.file << ':' << place.line << '\n';
  }
  for (const qnpp::Dependency& dependency : result.dependencies) std::cout << "// needs " << dependency.path << '\n';
}

int main(int count, char** names) {
  qnpp::Preprocessor preprocessor;
  preprocessor.define("EDITION=2");
  preprocessor.setResolver(resolve);
  preprocessor.setDiagnosticSink(show);
  preprocessor.setLineDirectives(false);
  preprocessor.setLineMap(true);
  preprocessor.setLimits({/*includeDepth=*/20, /*expansionWork=*/1'000'000, /*outputBytes=*/10'000'000,
                          /*time=*/std::chrono::seconds(10)});
  for (int i = 1; i < count; ++i) {
    const qnpp::Result result = preprocessor.run(qnpp::Source::borrowing(kFiles.at(names[i])), names[i]);
    if (result.status == qnpp::Status::Clean) compile(result);
    if (result.status == qnpp::Status::DivisionByZero) std::cout << "division by zero";
    if (result.status == qnpp::Status::LimitReached) std::cout << "too much";
    if (result.endLine != 0) std::cout << " at " << result.endFile << ':' << result.endLine << '\n';
  }
}
