// The process that the program runs in: the streams that it is given, and an end that is no return from `main`.
#pragma once

namespace qnpp {

/// Makes the standard streams safe to use, for bytes as they are:
///
/// - Writing fails where it would end the process by a signal: a reader has gone away, a file may not grow.
/// - A file that is opened takes the first descriptor that is free. Were standard error closed, messages would go into
///   it, so descriptors that are free are occupied.
/// - On Windows, these streams and all files opened from now on are binary: no line end is changed.
void prepareStreams();

/// Ends the process as the processor's arithmetic fault does: by the signal SIGFPE; on Windows, which has no signals,
/// with the status STATUS_INTEGER_DIVIDE_BY_ZERO, 0xC0000094.
[[noreturn]] void raiseArithmeticFault();

}  // namespace qnpp
