// The exported version functions; their contract stands in the public header.

#include <cstdio>

#include "BuildInfo.h"
#include "qnpp/version.h"

namespace {

// Fixed on every platform, see the public header.
constexpr const char* kPlatformName = "win32";

// A version text in storage of its own, formatted once when it is constructed and cut off at 255 characters.
class VersionText {
 public:
  explicit VersionText(const char* lead) {
    static_cast<void>(std::snprintf(buffer_, sizeof buffer_, "%s%d.%d.%d %s (%s%s) \"%s\"", lead, build_info::kMajor,
                                    build_info::kMinor, build_info::kPatch, kPlatformName, build_info::kDate,
                                    build_info::kIdentifierSuffix, build_info::kReleaseName));
  }

  const char* get() const { return buffer_; }

 private:
  char buffer_[256];
};

}  // namespace

const char* QnGetVersionString() {
  static const VersionText text("");
  return text.get();
}

const char* QnGetLibNameAndVersionString() {
  static const VersionText text("Quenley ");
  return text.get();
}

const char* QnGetCopyrightString() { return build_info::kCopyright; }
