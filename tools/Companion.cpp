#include "tools/Companion.h"

#include <filesystem>
#include <iostream>
#include <new>

#include "driver/MemoryBudget.h"
#include "driver/Process.h"

namespace qnpp {

int runCompanion(const char* name, const std::function<int()>& work) {
  MemoryBudget::begin();
  prepareStreams();
  try {
    return work();
  } catch (const Failure& failure) {
    std::cerr << name << ": " << failure.what() << '\n';
  } catch (const std::filesystem::filesystem_error& error) {
    std::cerr << name << ": " << error.what() << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "FATAL ERROR: out of memory.\n";
  }
  return kFailed;
}

}  // namespace qnpp
