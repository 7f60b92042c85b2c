#include "Program.h"

#include "Process.h"

namespace qnpp::faults {

Outcome run(const TemporaryFolder& folder, const Invocation& invocation) {
  ProcessRequest request;
  request.command = {"/bin/sh", "-c", "exec >the.output\n" + invocation.preparation + "\nexec \"$@\"", "sh",
                     QNPP_PROGRAM};
  request.command.insert(request.command.end(), invocation.words.begin(), invocation.words.end());
  request.workingFolder = folder.path();
  // Sanitizers make everything several times slower.
  request.timeLimit = invocation.timeLimit * (isSanitized() ? 10 : 1);
  const ProcessResult result = runProcess(request);
  return {result.status, result.killedBy, folder.read("the.output"), result.standardError};
}

}  // namespace qnpp::faults
