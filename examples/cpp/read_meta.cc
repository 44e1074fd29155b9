// Reads the <meta> pairs of a page through the C++ class of the installed
// library, found by find_package(Tagwright):
//   cmake -S examples/cpp -B out -DCMAKE_PREFIX_PATH=/usr/local && cmake --build out
//   out/read_meta examples/site      # "author=The Harbour Gazette" ... "matches: 3"
#include <tagwright/site_context.h>
#include <tagwright/tagwright.h>
#include <tagwright/version.h>

#include <filesystem>
#include <iostream>
#include <memory>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: read_meta SITE_ROOT\n";
    return 2;
  }
  tagwright::Tagwright tw;
  tw.OnStartPage(std::make_shared<tagwright::SiteContext>(
      std::filesystem::absolute(argv[1]).string(), std::filesystem::current_path().string()));
  int found = 0;
  std::string pairs = tw.readMetaContent("/index.htm", "*", 1, 0, "=", "\n", &found);
  std::cout << pairs << "\nmatches: " << found << " (tagwright " << TAGWRIGHT_VERSION << ")\n";
  return found < 0 ? 1 : 0;
}
