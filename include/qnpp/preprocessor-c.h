/*
 * The library for C, and for languages that call C: what qnpp/preprocessor.h has, by functions.
 *
 * Threads, memory and limits are as told there. Texts end in NUL unless their size is given. What a function returns
 * belongs to the object and is valid until its next run or its end; what a function of the caller is given is valid
 * during that call, in which it may call QnCancel, and no other function for the object. One that returns other than 0
 * ends the run as QnCallbackFailed; it must not leave by an exception or by longjmp. All functions stand a null pointer
 * for the object, as QnNewPreprocessor returns when there is no memory: a run is then QnOutOfMemory.
 */
#ifndef QNPP_PREPROCESSOR_C_H
#define QNPP_PREPROCESSOR_C_H

#include <stddef.h>
#include <stdint.h>

#include "qnpp/version.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A preprocessor, with the result of its last run. */
typedef struct QnPreprocessor QnPreprocessor;
/** Where a resolver puts what it has found. */
typedef struct QnInclude QnInclude;

/** How grave a message is. */
enum { QnWarning, QnError, QnFatalError };
/** How a run ended: see qnpp::Status. */
enum {
  QnClean,
  QnErrors,
  QnDivisionByZero,
  QnOutOfMemory,
  QnLimitReached,
  QnCancelled,
  QnScannerFailed,
  QnCallbackFailed
};
/** Which limit a run has reached. */
enum { QnNoLimit, QnIncludeDepth, QnExpansionWork, QnOutputBytes, QnTime };

/** A line of a source. */
typedef struct QnPlace {
  const char* file;
  int32_t line;
} QnPlace;

/** A message about the source: see qnpp::Diagnostic. */
typedef struct QnDiagnostic {
  int severity;
  const char* identifier;
  QnPlace place;
  const char* message;
  const char* text;
  const QnPlace* includeChain;
  size_t includeChainSize;
} QnDiagnostic;

/** What an `#include` asks for: see qnpp::IncludeRequest. */
typedef struct QnIncludeRequest {
  const char* name;
  int isQuoted;
  QnPlace place;
  const char* includerPath;
} QnIncludeRequest;

/** What ends a run before its end; 0 means no limit, so it is no rest of a deadline: see qnpp::Limits. */
typedef struct QnLimits {
  uint64_t includeDepth;
  uint64_t expansionWork;
  uint64_t outputBytes;
  uint64_t milliseconds;
} QnLimits;

/** Calls QnIncludeText or QnIncludeFile, or neither of them when there is no such file. */
typedef int (*QnResolver)(void* context, const QnIncludeRequest* request, QnInclude* include);
typedef int (*QnDiagnosticSink)(void* context, const QnDiagnostic* diagnostic);
typedef int (*QnOutputSink)(void* context, const char* block, size_t size);

QNPP_EXPORT QnPreprocessor* QnNewPreprocessor(void);
QNPP_EXPORT void QnFreePreprocessor(QnPreprocessor* preprocessor);

/** "NAME" or "NAME=text"; see qnpp::Preprocessor::define for line ends. */
QNPP_EXPORT void QnDefine(QnPreprocessor* preprocessor, const char* definition);
QNPP_EXPORT void QnAddIncludeDirectory(QnPreprocessor* preprocessor, const char* directory);
/** The context is handed to the function. A null pointer for a function takes away the one that was set. */
QNPP_EXPORT void QnSetResolver(QnPreprocessor* preprocessor, QnResolver resolver, void* context);
QNPP_EXPORT void QnSetDiagnosticSink(QnPreprocessor* preprocessor, QnDiagnosticSink sink, void* context);
QNPP_EXPORT void QnSetOutputSink(QnPreprocessor* preprocessor, QnOutputSink sink, void* context);
QNPP_EXPORT void QnSetLimits(QnPreprocessor* preprocessor, const QnLimits* limits);
QNPP_EXPORT void QnSetLineDirectives(QnPreprocessor* preprocessor, int areWritten);
QNPP_EXPORT void QnSetDependencies(QnPreprocessor* preprocessor, int areWanted);
QNPP_EXPORT void QnSetLineMap(QnPreprocessor* preprocessor, int isWanted);

/** For resolvers: the file is these bytes, which are copied, and goes by this path. */
QNPP_EXPORT void QnIncludeText(QnInclude* include, const char* path, const char* text, size_t size);
/** For resolvers: the file is the one of this path. */
QNPP_EXPORT void QnIncludeFile(QnInclude* include, const char* path);

/** Preprocesses bytes, or a file, and returns how the run ended. A null pointer for the name is an empty one. */
QNPP_EXPORT int QnRunText(QnPreprocessor* preprocessor, const char* text, size_t size, const char* name);
QNPP_EXPORT int QnRunFile(QnPreprocessor* preprocessor, const char* path, const char* name);
/** May be called from any thread and from a signal handler; ends the run that is under way, or else the next. */
QNPP_EXPORT void QnCancel(QnPreprocessor* preprocessor);

/** What the last run has written, if there was no output sink. `size` may be null. */
QNPP_EXPORT const char* QnGetOutput(const QnPreprocessor* preprocessor, size_t* size);
QNPP_EXPORT int QnHasErrors(const QnPreprocessor* preprocessor);
QNPP_EXPORT int QnGetLimit(const QnPreprocessor* preprocessor);
/** Where the last run ended before its end; {"", 0} otherwise. */
QNPP_EXPORT QnPlace QnGetEnd(const QnPreprocessor* preprocessor);
/** The `#include` directives that led there, from 0 for the innermost on; {"", 0} behind the last. */
QNPP_EXPORT QnPlace QnGetEndInclude(const QnPreprocessor* preprocessor, size_t index);
/** The files that were included, in the order of their first use. */
QNPP_EXPORT size_t QnCountDependencies(const QnPreprocessor* preprocessor);
QNPP_EXPORT const char* QnGetDependency(const QnPreprocessor* preprocessor, size_t index);
/** What a line of the output stands for, by the line map. */
QNPP_EXPORT QnPlace QnFindLine(const QnPreprocessor* preprocessor, uint64_t outputLine);

#ifdef __cplusplus
}
#endif

#endif
