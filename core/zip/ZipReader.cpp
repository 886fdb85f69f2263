#include "zip/ZipReader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <numeric>

#include "zip/ByteWriter.h"
#include "zip/ZipNames.h"

namespace orbisk::ZipReader {

namespace {

constexpr std::uint32_t centralSignature = 0x02014b50;
constexpr std::uint32_t endSignature = 0x06054b50;
constexpr std::size_t endSize = 22;
constexpr std::size_t centralSize = 46;
constexpr std::size_t localSize = 30;
constexpr std::size_t largestTail = endSize + 0xFFFF;

// Reads exactly size bytes at offset, or fails with the errno (EIO for a file that ends early).
std::expected<std::string, int> readAt(int fd, std::uint64_t offset, std::size_t size)
{
    std::string data(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const auto n = ::pread(fd, data.data() + done, size - done, static_cast<off_t>(offset + done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return std::unexpected(errno);
        if (n == 0)
            return std::unexpected(EIO);
        done += static_cast<std::size_t>(n);
    }
    return data;
}

// Marks members whose local header and data could run into another member or the directory.
void markBounds(std::vector<Entry>& list, std::uint64_t directoryOffset)
{
    std::vector<std::size_t> order(list.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return list[i].localHeaderOffset; });
    for (std::size_t k = 0; k < order.size(); ++k) {
        Entry& entry = list[order[k]];
        // Two records naming one local header share its bytes: only the first is read.
        entry.overlapping = k > 0 && list[order[k - 1]].localHeaderOffset == entry.localHeaderOffset;
        std::uint64_t limit = directoryOffset;
        for (std::size_t next = k + 1; next < order.size(); ++next) {
            if (list[order[next]].localHeaderOffset != entry.localHeaderOffset) {
                limit = list[order[next]].localHeaderOffset;
                break;
            }
        }
        entry.dataLimit = limit;
        const std::uint64_t end = std::uint64_t{entry.localHeaderOffset} + localSize + entry.compressedSize;
        if (end > limit)
            entry.overlapping = true;
    }
}

} // namespace

bool Entry::isLink() const
{
    return madeByUnix && ((externalAttributes >> 16) & S_IFMT) == S_IFLNK;
}

unsigned Entry::permissions(unsigned fallback) const
{
    const unsigned mode = (externalAttributes >> 16) & 0777u;
    return madeByUnix && mode != 0 ? mode : fallback;
}

std::expected<std::vector<Entry>, ZipError> entries(int fd)
{
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return std::unexpected(ZipError::notAZip());
    const auto fileSize = static_cast<std::uint64_t>(status.st_size);
    if (fileSize < endSize)
        return std::unexpected(ZipError::notAZip());
    const std::size_t tailSize = static_cast<std::size_t>(std::min<std::uint64_t>(fileSize, largestTail));
    const auto tail = readAt(fd, fileSize - tailSize, tailSize);
    if (!tail)
        return std::unexpected(ZipError::notAZip());
    std::size_t at = tailSize - endSize;
    // Searched backwards: the end record is the last thing in the file but for its comment.
    while (le32(*tail, at) != endSignature) {
        if (at == 0)
            return std::unexpected(ZipError::notAZip());
        --at;
    }
    const std::uint16_t count = le16(*tail, at + 10);
    const std::uint32_t directorySize = le32(*tail, at + 12);
    const std::uint32_t directoryOffset = le32(*tail, at + 16);
    if (count == 0xFFFF || directorySize == 0xFFFFFFFF || directoryOffset == 0xFFFFFFFF)
        return std::unexpected(ZipError::zip64Unsupported());
    if (std::uint64_t{directoryOffset} + directorySize > fileSize || std::uint64_t{count} * centralSize > directorySize)
        return std::unexpected(ZipError::notAZip());
    const auto directory = readAt(fd, directoryOffset, directorySize);
    if (!directory)
        return std::unexpected(ZipError::notAZip());

    std::vector<Entry> list;
    list.reserve(count);
    std::size_t pos = 0;
    for (std::uint16_t i = 0; i < count; ++i) {
        if (pos + centralSize > directory->size() || le32(*directory, pos) != centralSignature)
            return std::unexpected(ZipError::notAZip());
        const std::size_t nameLength = le16(*directory, pos + 28);
        const std::size_t extraLength = le16(*directory, pos + 30);
        const std::size_t commentLength = le16(*directory, pos + 32);
        if (pos + centralSize + nameLength + extraLength + commentLength > directory->size())
            return std::unexpected(ZipError::notAZip());
        Entry entry;
        entry.madeByUnix = static_cast<unsigned char>((*directory)[pos + 5]) == 3;
        entry.flags = le16(*directory, pos + 8);
        entry.method = le16(*directory, pos + 10);
        entry.dosTime = le16(*directory, pos + 12);
        entry.dosDate = le16(*directory, pos + 14);
        entry.crc = le32(*directory, pos + 16);
        entry.compressedSize = le32(*directory, pos + 20);
        entry.uncompressedSize = le32(*directory, pos + 24);
        entry.externalAttributes = le32(*directory, pos + 38);
        entry.localHeaderOffset = le32(*directory, pos + 42);
        // 0xFFFFFFFF in a size or offset means "in the ZIP64 extra field".
        if (entry.compressedSize == 0xFFFFFFFF || entry.uncompressedSize == 0xFFFFFFFF ||
            entry.localHeaderOffset == 0xFFFFFFFF)
            return std::unexpected(ZipError::zip64Unsupported());
        entry.rawName = directory->substr(pos + centralSize, nameLength);
        entry.name = ZipNames::decodeName(entry.rawName, (entry.flags & 0x0800) != 0, entry.madeByUnix);
        list.push_back(std::move(entry));
        pos += centralSize + nameLength + extraLength + commentLength;
    }
    markBounds(list, directoryOffset);
    return list;
}

} // namespace orbisk::ZipReader
