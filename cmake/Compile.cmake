# Flags that hold for every target of this project. `mv_target(<name>)` applies them; targets that
# come from elsewhere (a parent project, a test framework) are left alone.

include(CheckCXXCompilerFlag)

set(MV_SANITIZE "" CACHE STRING "Sanitizers, as given to -fsanitize=; empty for none")
set(MV_HARDENING ON CACHE BOOL "Compile and link with the hardening flags of the platform")
set(MV_COVERAGE OFF CACHE BOOL "Instrument for gcov (g++) or for llvm-cov (clang)")

set(MV_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2)

function(mv_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF C_EXTENSIONS OFF C_STANDARD 99
    CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE ${MV_WARNINGS}
    $<$<BOOL:${MV_WERROR}>:-Werror>
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
  target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)

  if(MV_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${MV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${MV_SANITIZE})
  elseif(MV_HARDENING AND NOT MV_COVERAGE)
    target_compile_options(${target} PRIVATE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
      $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>
      -fstack-protector-strong -fstack-clash-protection)
    # All symbols are resolved at start (-z now), so that calls need no stub that resolves them late.
    target_compile_options(${target} PRIVATE -fno-plt)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i.86")
      target_compile_options(${target} PRIVATE -fcf-protection)
    endif()
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack)
  endif()
  if(MV_BUILD_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(MV_COVERAGE)
    target_compile_options(${target} PRIVATE -O0)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      # With relocated counters a process that is killed has counted, too: the file is its memory.
      target_compile_options(${target} PRIVATE -fprofile-instr-generate -fcoverage-mapping
        -mllvm -runtime-counter-relocation)
      target_link_options(${target} PRIVATE -fprofile-instr-generate)
    else()
      target_compile_options(${target} PRIVATE --coverage)
      # Children of tests leave by _exit and write what they counted before (testing/FreshProcess.cpp);
      # the function for it is linked only where it is asked for.
      target_link_options(${target} PRIVATE --coverage -Wl,--undefined=__gcov_dump)
    endif()
  endif()

  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    target_link_options(${target} PRIVATE -pie)
  endif()
endfunction()
