// Times nothing itself: reads one folder with the core's DirectoryReader (optionally sorting it by
// name) so that bench/listing.sh can time it and measure its peak memory against list_floor.
#include <chrono>
#include <cstdio>
#include <cstring>

#include "files/DirectoryReader.h"
#include "files/FileSorter.h"

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: list_core FOLDER [--sort]\n");
        return 2;
    }
    auto items = orbisk::DirectoryReader::read(argv[1], true);
    if (!items) {
        std::fprintf(stderr, "list_core: %s\n", items.error().message().c_str());
        return 1;
    }
    std::size_t count = items->size();
    if (argc > 2 && std::strcmp(argv[2], "--sort") == 0) {
        // The sort alone, to stderr, for looking inside the read + sort total.
        const auto start = std::chrono::steady_clock::now();
        count = orbisk::FileSorter::sorted(std::move(*items), {}, true, {}, {}).size();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::fprintf(stderr, "sort by name: %.3f s\n", took.count());
    }
    std::printf("%zu\n", count);
    return 0;
}
