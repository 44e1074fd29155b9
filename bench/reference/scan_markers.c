/* The ceiling of a read in bench/compare: counts every "<" of a file, read in
 * 1 MiB blocks and searched with memchr. Any tool that finds markup has to
 * look at every byte at least this once.
 *   scan_markers FILE      prints the count; "matches: N" on stderr */
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char** argv) {
  static char block[1 << 20];
  if (argc != 2) {
    fprintf(stderr, "usage: scan_markers FILE\n");
    return 2;
  }
  int fd = open(argv[1], O_RDONLY);
  if (fd < 0) {
    perror(argv[1]);
    return 1;
  }
  long long count = 0;
  ssize_t length;
  while ((length = read(fd, block, sizeof block)) > 0) {
    const char* end = block + length;
    for (const char* at = block; (at = memchr(at, '<', (size_t)(end - at))) != NULL; ++at) ++count;
  }
  if (length < 0) {
    perror(argv[1]);
    return 1;
  }
  close(fd);
  printf("%lld", count);
  fprintf(stderr, "matches: %lld\n", count);
  return 0;
}
