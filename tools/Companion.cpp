#include "tools/Companion.h"

#include <filesystem>
#include <iostream>
#include <new>

#include "driver/MemoryBudget.h"
#include "driver/Process.h"
#include "tools/Utf8.h"

namespace qnpp {

int runCompanion(const char* name, const std::function<int()>& work) {
  MemoryBudget::begin();
  prepareStreams();
  try {
    return work();
  } catch (const Failure& failure) {
    std::cerr << name << ": " << withEscapes(failure.what()) << '\n';
  } catch (const std::filesystem::filesystem_error& error) {
    std::cerr << name << ": " << withEscapes(error.what()) << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "FATAL ERROR: out of memory.\n";
  }
  return kFailed;
}

}  // namespace qnpp
