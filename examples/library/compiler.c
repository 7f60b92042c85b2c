/* compiler.cpp once more, in C. */
#include <qnpp/preprocessor-c.h>
#include <stdio.h>
#include <string.h>

typedef struct File {
  const char* name;
  const char* text;
} File;

static const File kFiles[] = {
    {"player.idl", "#include \"common.idl\"\nplay(int track);\n#if EDITION >= 2\nTOGGLE(shuffle)\n#endif\n"},
    {"common.idl", "#define TOGGLE(name) set_##name(int on);\n\nping(void);\n"},
    {"strange.idl", "ping(void);\n\nskip;\n"},
    {"broken.idl", "#include \"deeper.idl\"\n"},
    {"deeper.idl", "ping(void);\n#include \"nowhere.idl\"\n"},
    {"zero.idl", "ping(void);\n#if 1 / 0\n"},
    {"endless.idl", "#include \"endless.idl\"\n"},
};

static const char* textOf(const char* name) {
  for (size_t i = 0; i < sizeof kFiles / sizeof *kFiles; ++i) {
    if (strcmp(kFiles[i].name, name) == 0) return kFiles[i].text;
  }
  return NULL;
}

static int resolve(void* context, const QnIncludeRequest* request, QnInclude* include) {
  const char* text = textOf(request->name);
  (void)context;
  if (text != NULL) QnIncludeText(include, request->name, text, strlen(text));
  return 0;
}

static int show(void* context, const QnDiagnostic* diagnostic) {
  (void)context;
  fputs(diagnostic->text, stdout);
  for (size_t i = 0; i < diagnostic->includeChainSize; ++i) {
    printf("  included from %s:%d\n", diagnostic->includeChain[i].file, (int)diagnostic->includeChain[i].line);
  }
  return 0;
}

static void compile(const QnPreprocessor* preprocessor) {
  const char* request = QnGetOutput(preprocessor, NULL);
  for (uint64_t number = 1; *request != '\0'; ++number) {
    const size_t length = strcspn(request, "\n");
    if (length != 0) {
      const QnPlace place = QnFindLine(preprocessor, number);
      const char* word = memchr(request, '(', length) != NULL ? "void" : "no request:";
      printf("%s %.*s // %s:%d\n", word, (int)length, request, place.file, (int)place.line);
    }
    request += length + (request[length] == '\n');
  }
  for (size_t i = 0; i < QnCountDependencies(preprocessor); ++i) {
    printf("// needs %s\n", QnGetDependency(preprocessor, i));
  }
}

int main(int count, char** names) {
  QnPreprocessor* preprocessor = QnNewPreprocessor();
  const QnLimits limits = {20, 1000000, 0, 0};
  QnDefine(preprocessor, "EDITION=2");
  QnSetResolver(preprocessor, resolve, NULL);
  QnSetDiagnosticSink(preprocessor, show, NULL);
  QnSetLineDirectives(preprocessor, 0);
  QnSetLineMap(preprocessor, 1);
  QnSetLimits(preprocessor, &limits);
  for (int i = 1; i < count; ++i) {
    const char* text = textOf(names[i]);
    const int status = text == NULL ? QnErrors : QnRunText(preprocessor, text, strlen(text), names[i]);
    const QnPlace end = QnGetEnd(preprocessor);
    if (status == QnClean) compile(preprocessor);
    if (status == QnDivisionByZero) printf("division by zero at %s:%d\n", end.file, (int)end.line);
    if (status == QnLimitReached) printf("too much at %s:%d\n", end.file, (int)end.line);
  }
  QnFreePreprocessor(preprocessor);
  return 0;
}
