#ifndef CORE_LOG_H
#define CORE_LOG_H

int printf(const char *format, ...);

#define LEVEL_NONE 0
#define LEVEL_ERROR 1
#define LEVEL_INFO 2

#ifndef LOG_LEVEL
#define LOG_LEVEL LEVEL_ERROR
#elif LOG_LEVEL < LEVEL_NONE || LOG_LEVEL > LEVEL_INFO
#error LOG_LEVEL must be 0 (nothing), 1 (errors) or 2 (all)
#endif

#define LOG_LINE(level, text, value) printf("%s:%d: " level ": " text " %d\n", __FILE__, __LINE__, value)

#if LOG_LEVEL >= LEVEL_ERROR
#define logError(text, value) LOG_LINE("error", text, value)
#else
#define logError(text, value) ((void)(value))
#endif

#if LOG_LEVEL >= LEVEL_INFO
#define logInfo(text, value) LOG_LINE("info", text, value)
#else
#define logInfo(text, value) ((void)(value))
#endif

#endif
