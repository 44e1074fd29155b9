/* The floor of a site-wide read in bench/site: for each FILE, open it, read
 * its first 8 KiB once, look for "<title>" in them, and close it. Nothing a
 * batch read can do per page costs less than these three system calls; under
 * xargs -P<cores> it shows what the kernel alone takes for a site.
 *   read_first_block FILE...   prints how many files held "<title>" */
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char** argv) {
  static char block[8192];
  long found = 0;
  for (int i = 1; i < argc; ++i) {
    int file = open(argv[i], O_RDONLY | O_CLOEXEC);
    if (file < 0) {
      perror(argv[i]);
      return 1;
    }
    ssize_t length = read(file, block, sizeof block);
    if (length > 0 && memmem(block, (size_t)length, "<title>", 7) != NULL) ++found;
    close(file);
  }
  printf("%ld\n", found);
  return 0;
}
