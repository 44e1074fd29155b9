#ifndef TAGWRIGHT_EXPORT_H_
#define TAGWRIGHT_EXPORT_H_

/* The library is built with hidden symbols; what carries this mark is its
 * public interface, and nothing else leaves the shared object. */
#if defined(__GNUC__)
#define TAGWRIGHT_EXPORT __attribute__((visibility("default")))
#else
#define TAGWRIGHT_EXPORT
#endif

#endif /* TAGWRIGHT_EXPORT_H_ */
