# find_package(qnpp) gives the imported program `qnpp::qnpp` and the function qnpp_preprocess(), and, where the library is
# installed, `qnpp::library`, which find_package(qnpp COMPONENTS library) insists on.

include("${CMAKE_CURRENT_LIST_DIR}/qnppTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/QnppPreprocess.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/qnppLibraryTargets.cmake" OPTIONAL)

if(TARGET qnpp::library)
  set(qnpp_library_FOUND TRUE)
endif()
foreach(component IN LISTS qnpp_FIND_COMPONENTS)
  if(qnpp_FIND_REQUIRED_${component} AND NOT qnpp_${component}_FOUND)
    set(qnpp_FOUND FALSE)
    set(qnpp_NOT_FOUND_MESSAGE "qnpp is installed without: ${component}")
  endif()
endforeach()
