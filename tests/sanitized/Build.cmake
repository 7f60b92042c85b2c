# cmake -DSOURCE_DIR=... -DBUILD_DIR=... -DGENERATOR=... -DSANITIZERS=... -DCOMPILER=... -DTARGETS=... -P Build.cmake: see
# CMakeLists.txt.
#
# Compiling takes most of the time: so nothing is optimised, each target is compiled in one go, and a report names functions
# but no lines. The preset asan tells these.

if(COMPILER)
  file(WRITE "${BUILD_DIR}/empty.cpp" "int main() {}\n")
  execute_process(COMMAND "${COMPILER}" "-fsanitize=${SANITIZERS}" empty.cpp -o empty
                  WORKING_DIRECTORY "${BUILD_DIR}" RESULT_VARIABLE status ERROR_QUIET)
  if(status EQUAL 0)
    set(ENV{CXX} "${COMPILER}")
  endif()
endif()
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BUILD_DIR}" -G "${GENERATOR}" -DCMAKE_BUILD_TYPE=RelWithDebInfo
          -DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0 -UNDEBUG"
          "-DQNPP_SANITIZE=${SANITIZERS}" -DQNPP_DEVELOPER=ON -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0
          -DQNPP_BUILD_BENCHMARKS=OFF
  COMMAND_ERROR_IS_FATAL ANY)
# One job, since others run beside this.
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BUILD_DIR}" --parallel 1 --target ${TARGETS} COMMAND_ERROR_IS_FATAL ANY)
