// Scan throughput through readXPointer, with each matcher, and rewrite
// throughput through writeXPointer, on generated pages on disk, swept over
// document size and chunk length. Each benchmark checks its count before it
// is timed.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "generated_page.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

struct PageOnDisk {
  GeneratedPage page;
  std::string path;
};

const PageOnDisk& pageOfSize(std::size_t megabytes) {
  static std::map<std::size_t, PageOnDisk> pages;
  auto it = pages.find(megabytes);
  if (it != pages.end()) return it->second;
  PageOnDisk& entry = pages[megabytes];
  entry.page = generatePage(megabytes << 20);
  entry.path = (std::filesystem::temp_directory_path() /
                ("tagwright-bench-" + std::to_string(megabytes) + "m.htm"))
                   .string();
  std::ofstream(entry.path, std::ios::binary) << entry.page.bytes;
  // The component takes a path with "\" as physical; a "/" path would be virtual.
  for (char& c : entry.path) c = c == '/' ? '\\' : c;
  return entry;
}

struct Query {
  const char* element;
  const char* attributeName;
  const char* attributeValue;
  const char* contentType;
  int (*expected)(const GeneratedPage&);
};

void runScan(benchmark::State& state, const Query& query) {
  const PageOnDisk& disk = pageOfSize(static_cast<std::size_t>(state.range(0)));
  Tagwright instance;
  TagwrightTestAccess::setBufferLength(instance, static_cast<std::int32_t>(state.range(1)));
  int want = query.expected(disk.page);
  auto scan = [&] {
    int matches = 0;
    std::string result =
        instance.readXPointer(disk.path, query.element, query.attributeName, query.attributeValue,
                              1, 0, query.contentType, "", "", ";", &matches);
    benchmark::DoNotOptimize(result);
    return matches;
  };
  int got = scan();
  if (want >= 0 && got != want) {
    state.SkipWithError(
        ("expected " + std::to_string(want) + " matches, got " + std::to_string(got)).c_str());
    return;
  }
  for (auto _ : state) scan();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(disk.page.bytes.size()));
}

// CountInstances 0 takes at most 32000 instances.
int serverBlocks(const GeneratedPage& page) { return std::min(page.serverBlocks, 32000); }
int unchecked(const GeneratedPage&) { return -1; }

void ServerCode(benchmark::State& state) {
  runScan(state, {"#aspcode", "*", "*", "innerMarkup", serverBlocks});
}

void ProcessingInstructionsNone(benchmark::State& state) {
  runScan(state, {"#pi", "*", "*", "innerMarkup", [](const GeneratedPage&) { return 0; }});
}

void Comments(benchmark::State& state) {
  runScan(state, {"#comment", "*", "*", "innerMarkup", unchecked});
}

// The page's one declaration names no public or system identifier: no instance.
void DoctypeNone(benchmark::State& state) {
  runScan(state, {"#dtd", "*", "*", "innerMarkup", [](const GeneratedPage&) { return 0; }});
}

void AnyElement(benchmark::State& state) {
  runScan(state, {"#element", "*", "*", "innerMarkup", unchecked});
}

void NamedElementWithAttribute(benchmark::State& state) {
  runScan(state, {"div", "id", "target", "innerMarkup", [](const GeneratedPage&) { return 1; }});
}

void ParagraphsInnerText(benchmark::State& state) {
  runScan(state, {"p", "*", "*", "innerText",
                  [](const GeneratedPage& page) { return std::min(page.paragraphs, 32000); }});
}

// The target's content replaced by itself, so that every round rewrites the
// same document: read, copy out, sync, and the backup rotation.
void RewriteTarget(benchmark::State& state) {
  const PageOnDisk& disk = pageOfSize(static_cast<std::size_t>(state.range(0)));
  Tagwright instance;
  TagwrightTestAccess::setBufferLength(instance, static_cast<std::int32_t>(state.range(1)));
  auto rewrite = [&] {
    std::string replaced;
    int count = instance.writeXPointer("<p>The one target paragraph.</p>", disk.path, "div", "id",
                                       "target", 1, 1, "innerMarkup", "", "", &replaced);
    benchmark::DoNotOptimize(replaced);
    return count;
  };
  if (int count = rewrite(); count != 1) {
    state.SkipWithError(("expected 1 rewrite, got " + std::to_string(count)).c_str());
    return;
  }
  for (auto _ : state) rewrite();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(disk.page.bytes.size()));
}

void sizesAndChunks(benchmark::internal::Benchmark* b) {
  for (int megabytes : {4, 16}) {
    for (int chunk : {257, 2048, 30000}) b->Args({megabytes, chunk});
  }
  b->Unit(benchmark::kMillisecond);
}

BENCHMARK(ServerCode)->Apply(sizesAndChunks);
BENCHMARK(ProcessingInstructionsNone)->Apply(sizesAndChunks);
BENCHMARK(Comments)->Apply(sizesAndChunks);
BENCHMARK(DoctypeNone)->Apply(sizesAndChunks);
BENCHMARK(AnyElement)->Apply(sizesAndChunks);
BENCHMARK(NamedElementWithAttribute)->Apply(sizesAndChunks);
BENCHMARK(ParagraphsInnerText)->Apply(sizesAndChunks);
BENCHMARK(RewriteTarget)->Apply(sizesAndChunks);

}  // namespace
}  // namespace tagwright
