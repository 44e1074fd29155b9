#ifndef TAGWRIGHT_PLATFORM_VECTOR_CLONES_H_
#define TAGWRIGHT_PLATFORM_VECTOR_CLONES_H_

// Marks a function made of plain loops that the compiler vectorises: on
// x86-64 it is built twice, for AVX2 and for the baseline, and the one the
// processor runs is picked when the program is loaded.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define TAGWRIGHT_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define TAGWRIGHT_VECTOR_CLONES
#endif

#endif  // TAGWRIGHT_PLATFORM_VECTOR_CLONES_H_
