# find_package(qnpp) gives the imported program `qnpp::qnpp` and the function qnpp_preprocess().

include("${CMAKE_CURRENT_LIST_DIR}/qnppTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/QnppPreprocess.cmake")
