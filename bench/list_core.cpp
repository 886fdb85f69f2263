// Times nothing itself: reads one folder with the core's DirectoryReader (optionally sorting it by
// name) so that bench/listing.sh can time it and measure its peak memory against list_floor.
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
    if (argc > 2 && std::strcmp(argv[2], "--sort") == 0)
        count = orbisk::FileSorter::sorted(std::move(*items), {}, true, {}, {}).size();
    std::printf("%zu\n", count);
    return 0;
}
