# One source, several CPU levels: libQVEffects.so for the lowest, and a build for each higher level in
# glibc-hwcaps/LEVEL beside it. The dynamic loader takes the highest that the processor has.

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  set(default_levels x86-64-v2 x86-64-v3 x86-64-v4)
else()
  set(default_levels "")
endif()
set(QVEFFECTS_CPU_LEVELS ${default_levels} CACHE STRING
    "CPU levels to build for, lowest first; empty for the compiler's default")

# qveffects_cpu_level(TARGET LEVEL): compiles the target for a CPU level. clang is told to use whole
# 512-bit vectors, which it avoids by default for processors that few have any more.
function(qveffects_cpu_level target level)
  target_compile_options(${target} PRIVATE -march=${level})
  if(level STREQUAL "x86-64-v4")
    target_compile_options(${target} PRIVATE -mprefer-vector-width=512)
  endif()
endfunction()
