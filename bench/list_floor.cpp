// The least a listing can cost: readdir and one fstatat per entry, keeping nothing. The yardstick
// for DirectoryReader::read in bench/listing.sh.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: list_floor FOLDER\n");
        return 2;
    }
    DIR* dir = ::opendir(argv[1]);
    if (dir == nullptr) {
        std::perror("list_floor");
        return 1;
    }
    const int fd = ::dirfd(dir);
    long long count = 0;
    long long bytes = 0;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        struct stat st {};
        if (::fstatat(fd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0)
            bytes += st.st_size;
        ++count;
    }
    ::closedir(dir);
    std::printf("%lld %lld\n", count, bytes);
    return 0;
}
