// What the viewer and the editor do with a file, as a command the benchmark script can time
// against head, tail, grep, cat and cp:
//   text_view first FILE [LINES]   the first screen of lines, as the viewer shows on opening
//   text_view last FILE [LINES]    the last screen, as End or following a log shows
//   text_view find FILE TEXT       the offset of the first match, as the viewer's find
//   text_view load FILE            TextFile::load without a size limit
//   text_view save FILE TARGET     TextFile::load of FILE, then TextFile::save to TARGET
// The lines go to standard output so that the work cannot be skipped.
#include "text/PagedFile.h"
#include "text/TextFile.h"

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace orbisk;

namespace {

int fail(const TextFileError& error)
{
    std::fprintf(stderr, "%s\n", error.errorDescription().c_str());
    return 1;
}

void print(const PagedFile& file, std::int64_t from, std::int64_t to)
{
    const auto text = file.read(from, static_cast<std::size_t>(to - from));
    std::fwrite(text.data(), 1, text.size(), stdout);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: text_view first|last|find|load|save FILE [ARG]\n");
        return 2;
    }
    const std::string command = argv[1];
    const std::filesystem::path path = argv[2];
    const std::int64_t lines = argc > 3 ? std::atoll(argv[3]) : 50;
    if (command == "first" || command == "last" || command == "find") {
        auto file = PagedFile::open(path);
        if (!file)
            return fail(file.error());
        if (command == "first") {
            print(*file, 0, file->stepLines(0, lines));
        } else if (command == "last") {
            const auto end = file->size();
            print(*file, file->stepLines(file->lineStart(end), -lines), end);
        } else {
            const auto found = file->find(argv[3], 0, file->size(), true);
            std::printf("%lld\n", found ? static_cast<long long>(*found) : -1LL);
        }
        return 0;
    }
    auto loaded = TextFile::load(path, INT64_MAX);
    if (!loaded)
        return fail(loaded.error());
    if (command == "load") {
        std::printf("%zu\n", loaded->text.size());
        return 0;
    }
    if (command == "save" && argc > 3) {
        auto saved = TextFile::save(loaded->text, argv[3], loaded->encoding, loaded->lineEnding);
        if (!saved)
            return fail(saved.error());
        return 0;
    }
    std::fprintf(stderr, "unknown command %s\n", command.c_str());
    return 2;
}
