// Reading a text file for the editor: type and size checked before a byte is read.
#include "text/TextFile.h"

#include "platform/OwnedFd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orbisk::TextFile {
namespace {

// Reads at most limit + 1 bytes, so that a file that grew past the limit since its status was
// read is noticed without reading the rest of it.
std::expected<std::string, int> readUpTo(int fd, std::int64_t expectedSize, std::int64_t limit)
{
    // The buffer is not zeroed first: for a large file, clearing memory that the read overwrites
    // anyway costs as much as the read.
    const auto grow = [](std::string& buffer, std::size_t size) {
        buffer.resize_and_overwrite(size, [](char*, std::size_t n) { return n; });
    };
    std::string data;
    grow(data, static_cast<std::size_t>(std::min(expectedSize, limit) + 1));
    std::size_t used = 0;
    const auto cap = static_cast<std::size_t>(limit) + 1;
    for (;;) {
        if (used == data.size()) {
            if (data.size() >= cap)
                break;
            grow(data, std::min(cap, data.size() * 2 + 4096));
        }
        const ssize_t got = ::read(fd, data.data() + used, data.size() - used);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return std::unexpected(errno);
        }
        if (got == 0)
            break;
        used += static_cast<std::size_t>(got);
    }
    data.resize(used);
    return data;
}

} // namespace

std::expected<LoadedText, TextFileError> load(const std::filesystem::path& path, std::int64_t sizeLimit)
{
    // The type is checked before opening, and the open does not wait, so a FIFO or a device
    // never blocks the caller; the status of the open file is checked again in case the name
    // was swapped in between.
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::unexpected(TextFileError::system(errno, "read", path));
    if (!S_ISREG(status.st_mode))
        return std::unexpected(TextFileError::notRegularFile(path));
    if (status.st_size > sizeLimit)
        return std::unexpected(TextFileError::tooLarge(status.st_size, sizeLimit));

    OwnedFd fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.isOpen())
        return std::unexpected(TextFileError::system(errno, "read", path));

    // A file written while we read it would give bytes of no single version: read again until
    // the status before and after agree, and keep that status as the stamp.
    std::string data;
    FileStamp stamp;
    for (int attempt = 0;; ++attempt) {
        if (::fstat(fd.get(), &status) != 0)
            return std::unexpected(TextFileError::system(errno, "read", path));
        if (!S_ISREG(status.st_mode))
            return std::unexpected(TextFileError::notRegularFile(path));
        if (status.st_size > sizeLimit)
            return std::unexpected(TextFileError::tooLarge(status.st_size, sizeLimit));
        stamp = FileStamp::of(status);
        auto read = readUpTo(fd.get(), status.st_size, sizeLimit);
        if (!read)
            return std::unexpected(TextFileError::system(read.error(), "read", path));
        if (static_cast<std::int64_t>(read->size()) > sizeLimit)
            return std::unexpected(TextFileError::tooLarge(static_cast<std::int64_t>(read->size()), sizeLimit));
        data = std::move(*read);
        struct stat after {};
        if (::fstat(fd.get(), &after) != 0)
            return std::unexpected(TextFileError::system(errno, "read", path));
        if (FileStamp::of(after) == stamp || attempt == 2)
            break;
        if (::lseek(fd.get(), 0, SEEK_SET) != 0)
            return std::unexpected(TextFileError::system(errno, "read", path));
    }

    const auto classification = classify(data);
    if (classification.kind == TextClassification::Kind::binary)
        return std::unexpected(TextFileError::of(TextFileError::Kind::binary));
    if (classification.kind == TextClassification::Kind::unknownEncoding)
        return std::unexpected(TextFileError::of(TextFileError::Kind::unsupportedEncoding));
    // UTF-8 is already the text (classify validated it): it is used where it was read, without
    // another copy of a file that may be tens of megabytes.
    std::string text;
    if (classification.encoding == TextEncodingKind::utf8 || classification.encoding == TextEncodingKind::utf8BOM) {
        text = std::move(data);
        text.erase(0, byteOrderMark(classification.encoding).size());
    } else if (auto decoded = decode(data, classification.encoding)) {
        text = std::move(*decoded);
    } else { // classify decoded it already; kept should the two ever disagree
        return std::unexpected(TextFileError::of(TextFileError::Kind::unsupportedEncoding));
    }
    const auto endings = lineEndings(text);
    LoadedText loaded;
    if (text.find('\r') != std::string::npos)
        text = normalizeLineEndings(text);
    loaded.text = std::move(text);
    loaded.encoding = classification.encoding;
    loaded.lineEnding = endings.dominant;
    loaded.hasMixedLineEndings = endings.mixed;
    loaded.stamp = stamp;
    return loaded;
}

} // namespace orbisk::TextFile
