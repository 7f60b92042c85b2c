// The streams that every process is given, made safe to use.
#pragma once

namespace qnpp {

/// Lets writing fail where it would end the process by a signal: a reader that has gone away, a file that may not grow.
void ignoreFailedWrites();

/// A file that is opened takes the first descriptor that is free. Were standard error closed, messages would go into
/// it.
void occupyStandardDescriptors();

}  // namespace qnpp
