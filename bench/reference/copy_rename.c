/* The floor of a rewrite in bench/compare: copies a file to a temporary file
 * beside it by read and write in 1 MiB blocks, then renames the copy over the
 * file. With --sync the copy and its folder are synced first, as a rewrite
 * that must survive a power cut does.
 * Several FILEs are done one after the other, each in full (bench/site runs
 * it under xargs, as a site-wide rewrite would).
 *   copy_rename [--sync] FILE...   prints nothing; "matches: 0" on stderr */
#include <fcntl.h>
#include <libgen.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static int fail(const char* what) {
  perror(what);
  return 1;
}

static int copyRename(const char* path, int sync) {
  static char block[1 << 20];
  char temporary[4096];
  snprintf(temporary, sizeof temporary, "%s.tmp~", path);
  int in = open(path, O_RDONLY);
  if (in < 0) return fail(path);
  int out = open(temporary, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (out < 0) return fail(temporary);
  ssize_t length;
  while ((length = read(in, block, sizeof block)) > 0) {
    if (write(out, block, (size_t)length) != length) return fail(temporary);
  }
  if (length < 0) return fail(path);
  if (sync && fsync(out) != 0) return fail(temporary);
  close(in);
  if (close(out) != 0) return fail(temporary);
  if (rename(temporary, path) != 0) return fail(path);
  if (sync) {
    char folder[4096];
    snprintf(folder, sizeof folder, "%s", path);
    int directory = open(dirname(folder), O_RDONLY | O_DIRECTORY);
    if (directory < 0 || fsync(directory) != 0) return fail("folder");
    close(directory);
  }
  return 0;
}

int main(int argc, char** argv) {
  int sync = argc >= 2 && strcmp(argv[1], "--sync") == 0;
  if (argc < 2 + sync) {
    fprintf(stderr, "usage: copy_rename [--sync] FILE...\n");
    return 2;
  }
  for (int i = 1 + sync; i < argc; ++i) {
    if (copyRename(argv[i], sync) != 0) return 1;
  }
  fprintf(stderr, "matches: 0\n");
  return 0;
}
