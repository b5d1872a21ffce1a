# One list of kernel sources, compiled once for every instruction set of the target processor. Each unit puts all of
# its code into a namespace named after its set, so that nothing compiled for a wide set can be linked in elsewhere.
set(VIDPROC_KNOWN_LEVELS scalar portable sse2 sse41 avx2 avx512 avx512vbmi neon wasm)
if(VIDPROC_LEVELS)
  set(VIDPROC_BUILT_LEVELS ${VIDPROC_LEVELS})
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|i[3-6]86)$")
  set(VIDPROC_BUILT_LEVELS scalar sse2 sse41 avx2 avx512 avx512vbmi)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64|ARM64)$")  # little-endian only, as the vocabulary is
  set(VIDPROC_BUILT_LEVELS scalar neon)
elseif(EMSCRIPTEN)
  set(VIDPROC_BUILT_LEVELS scalar wasm)
else()
  set(VIDPROC_BUILT_LEVELS scalar portable)
endif()
foreach(level IN LISTS VIDPROC_BUILT_LEVELS)
  if(NOT level IN_LIST VIDPROC_KNOWN_LEVELS)
    message(FATAL_ERROR "VIDPROC_LEVELS: ${level} is not one of ${VIDPROC_KNOWN_LEVELS}")
  endif()
endforeach()

set(VIDPROC_FLAGS_portable -Wno-psabi)  # vectors cross functions of one unit only
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The loop over eight lanes of MultiplyHigh in simd/portable.h becomes one instruction only while it is a loop.
  list(APPEND VIDPROC_FLAGS_portable --param=max-completely-peel-times=7)
endif()
set(VIDPROC_FLAGS_sse2 -msse2)
set(VIDPROC_FLAGS_sse41 -msse4.1)
set(VIDPROC_FLAGS_avx2 -mavx2)
set(VIDPROC_FLAGS_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl)
set(VIDPROC_FLAGS_avx512vbmi ${VIDPROC_FLAGS_avx512} -mavx512vbmi)
set(VIDPROC_FLAGS_wasm -msimd128)
if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The stack of 64-bit Windows is aligned to 16 bytes, and g++ keeps wider vectors there as if it were to 32 or 64
  # (https://gcc.gnu.org/bugzilla/show_bug.cgi?id=54412). The assembler makes these moves unaligned ones.
  foreach(level avx2 avx512 avx512vbmi)
    list(APPEND VIDPROC_FLAGS_${level} -Wa,-muse-unaligned-vector-move)
  endforeach()
endif()
if(VIDPROC_EMULATE_WIDE)
  # Emulated vectors cross functions of one unit only: their calling convention does not matter.
  set(VIDPROC_FLAGS_avx512 -mavx2 -DVIDPROC_EMULATE_WIDE -Wno-psabi)
  set(VIDPROC_FLAGS_avx512vbmi ${VIDPROC_FLAGS_avx512})
endif()

# vidproc_compile_per_level(NAME OBJECTS SOURCE...): object library NAME_<level> per level, their objects in OBJECTS.
function(vidproc_compile_per_level name objectsVariable)
  set(objects)
  foreach(level IN LISTS VIDPROC_BUILT_LEVELS)
    set(unit ${name}_${level})
    add_library(${unit} OBJECT ${ARGN})
    target_include_directories(${unit} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${unit} PRIVATE vidproc_flags)
    target_compile_definitions(${unit} PRIVATE VIDPROC_TARGET=${level} VIDPROC_TARGET_${level})
    target_compile_options(${unit} PRIVATE ${VIDPROC_FLAGS_${level}} -fno-exceptions -fno-rtti)
    # Where a host asks for link-time optimisation, the common part gets it: kernels of all levels in one unit would be
    # at the mercy of the linker's inlining.
    set_target_properties(${unit} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
    # A square root is an instruction, not a call that may set errno.
    target_compile_options(${unit} PRIVATE -fno-math-errno)
    if(level MATCHES avx512 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # g++ 12 warns about its own AVX-512 header at -O3.
      target_compile_options(${unit} PRIVATE -Wno-maybe-uninitialized -Wno-uninitialized)
    endif()
    list(APPEND objects $<TARGET_OBJECTS:${unit}>)
  endforeach()
  set(${objectsVariable} ${objects} PARENT_SCOPE)
endfunction()
