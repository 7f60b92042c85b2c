/*
 * What a running qnpp can be asked about itself.
 *
 * The three functions are in the program's dynamic symbol table with C names, so that whatever is loaded into the
 * process finds them with dlsym(), on Windows with GetProcAddress(). Every returned string ends in NUL, belongs to the
 * program and stays valid and unchanged until it exits; the same function always returns the same pointer.
 */
#ifndef QNPP_VERSION_H
#define QNPP_VERSION_H

#if defined(__GNUC__) && !defined(_WIN32)
#define QNPP_EXPORT __attribute__((visibility("default")))
#else
#define QNPP_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Numbers of the release, platform, date of the build (UTC) and revision, name of the release, such as
 *   1.0.0 win32 (Mar  5 2026, 0123456789) "Name"
 * The platform reads "win32" everywhere: programs that take the text apart rely on that word. At most 255 characters.
 */
QNPP_EXPORT const char* QnGetVersionString(void);

/* The same with "Quenley " in front of it. At most 255 characters. */
QNPP_EXPORT const char* QnGetLibNameAndVersionString(void);

/* The copyright notice, one line without a line end. */
QNPP_EXPORT const char* QnGetCopyrightString(void);

#ifdef __cplusplus
}
#endif

#endif
