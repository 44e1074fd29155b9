/* Reads the news paragraphs of a site through the C interface of the
 * installed library:
 *   cc read_news.c $(pkg-config --cflags --libs tagwright) -o read_news
 *   ./read_news examples/site      # prints the texts, then "matches: 3" */
#include <stdio.h>
#include <tagwright/tagwright_c.h>

int main(int argc, char** argv) {
  tagwright_instance* tw = NULL;
  char* text = NULL;
  size_t length = 0;
  int found = 0;
  int code;
  if (argc != 2) {
    fprintf(stderr, "usage: read_news SITE_ROOT\n");
    return 2;
  }
  code = tagwright_new(NULL, &tw, NULL);
  if (code == TAGWRIGHT_OK) code = tagwright_set_site_root(tw, argv[1]);
  if (code == TAGWRIGHT_OK) {
    code = tagwright_read(tw, "/index.htm", "p", "class", "news", 1, 0, "innerText", NULL, NULL,
                          "\n", &text, &length, &found);
  }
  if (code != TAGWRIGHT_OK) {
    fprintf(stderr, "read_news: tagwright call failed with code %d\n", code);
    tagwright_delete(tw);
    return 1;
  }
  fwrite(text, 1, length, stdout);
  printf("\nmatches: %d (tagwright %s)\n", found, tagwright_version());
  tagwright_free(text);
  tagwright_delete(tw);
  return found < 0 ? 1 : 0;
}
