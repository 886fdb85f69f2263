#include "platform/FolderListing.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace orbisk {

namespace {

bool isDotOrDotDot(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

} // namespace

std::expected<FolderListing, int> FolderListing::open(int folderFd, bool keepOpen)
{
    DIR* stream = ::fdopendir(folderFd);
    if (!stream) {
        const int code = errno;
        ::close(folderFd);
        return std::unexpected(code);
    }
    FolderListing listing;
    listing.stream_ = stream;
    if (keepOpen)
        return listing;
    while (auto entry = listing.next())
        listing.entries_.push_back(std::move(*entry));
    ::closedir(std::exchange(listing.stream_, nullptr));
    return listing;
}

FolderListing::FolderListing(FolderListing&& other) noexcept
    : stream_(std::exchange(other.stream_, nullptr)), entries_(std::move(other.entries_)), nextEntry_(other.nextEntry_),
      error_(other.error_)
{
}

FolderListing& FolderListing::operator=(FolderListing&& other) noexcept
{
    std::swap(stream_, other.stream_);
    std::swap(entries_, other.entries_);
    std::swap(nextEntry_, other.nextEntry_);
    std::swap(error_, other.error_);
    return *this;
}

FolderListing::~FolderListing()
{
    if (stream_)
        ::closedir(stream_);
}

std::optional<FolderListing::Entry> FolderListing::next()
{
    if (!stream_) {
        if (nextEntry_ < entries_.size())
            return std::move(entries_[nextEntry_++]);
        return std::nullopt;
    }
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(stream_);
        if (!entry) {
            error_ = errno;
            return std::nullopt;
        }
        if (!isDotOrDotDot(entry->d_name))
            return Entry{entry->d_name, entry->d_type};
    }
}

} // namespace orbisk
