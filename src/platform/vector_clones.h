#ifndef TAGWRIGHT_PLATFORM_VECTOR_CLONES_H_
#define TAGWRIGHT_PLATFORM_VECTOR_CLONES_H_

// Marks a function made of plain loops that the compiler vectorises: on
// x86-64 it is built twice, for AVX2 and for the baseline, and the one the
// processor runs is picked when the program is loaded. Not under
// ThreadSanitizer: the picker of a shared library runs while the library is
// relocated, before the sanitizer's runtime is ready, and crashes there.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__)
#define TAGWRIGHT_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define TAGWRIGHT_VECTOR_CLONES
#endif

// Code written for AVX2 with intrinsics: built beside the portable code it
// stands in for, and taken where processorHasAvx2().
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define TAGWRIGHT_HAVE_AVX2_PATH 1
#define TAGWRIGHT_AVX2 __attribute__((target("avx2")))
namespace tagwright {
inline bool processorHasAvx2() { return __builtin_cpu_supports("avx2"); }
}  // namespace tagwright
#endif

#endif  // TAGWRIGHT_PLATFORM_VECTOR_CLONES_H_
