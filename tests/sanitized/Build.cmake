# cmake -DSOURCE_DIR=... -DBUILD_DIR=... -DGENERATOR=... -DPYTHON=... -P Build.cmake: see CMakeLists.txt.

set(targets qnpp qnpp_fuzz_lexer qnpp_fuzz_expression qnpp_fuzz_macro qnpp_fuzz_preprocessor
            qnpp_fuzz_recorder)
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BUILD_DIR}" -G "${GENERATOR}" -DCMAKE_BUILD_TYPE=RelWithDebInfo
          -DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1"
          -DQNPP_SANITIZE=address,undefined -DQNPP_DEVELOPER=ON -DQNPP_BUILD_TESTS=OFF -DQNPP_BUILD_BENCHMARKS=OFF
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BUILD_DIR}" --parallel 2 --target ${targets} COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND "${PYTHON}" "${SOURCE_DIR}/fuzz/make_seeds.py" "${SOURCE_DIR}/tests/golden" "${BUILD_DIR}/seeds"
  COMMAND_ERROR_IS_FATAL ANY)
