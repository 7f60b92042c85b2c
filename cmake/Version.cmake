# The release in one place: everything that `qnpp --version` and the exported version functions say about it,
# apart from the date of the build and the revision, which cmake/WriteBuildInfo.cmake finds out at build time.

set(QNPP_VERSION "1.0.0")
set(QNPP_RELEASE_NAME "Alder")
set(QNPP_COPYRIGHT "Copyright (c) 2026 Quenley. All rights reserved.")
