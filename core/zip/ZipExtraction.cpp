// ZipReader::extract: staging, members, links, the move into place and the report.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "operations/FileOperationError.h"
#include "operations/ItemStamp.h"
#include "operations/NameGenerator.h"
#include "platform/ExclusiveRename.h"
#include "support/Uuid.h"
#include "zip/DOSDate.h"
#include "zip/StagingTree.h"
#include "zip/ZipNames.h"
#include "zip/ZipReader.h"

namespace orbisk::ZipReader {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestLinkText = 4096;
constexpr int nameAttempts = 100;

struct PendingLink {
    StagingTree::Components components;
    std::string target;
    const Entry* entry = nullptr;
};

bool isResourceFork(const std::string& name)
{
    return name == "__MACOSX" || name.starts_with("__MACOSX/");
}

// Out of room: the rest cannot be written either.
bool endsTheRun(int code)
{
    return code == ENOSPC || code == EDQUOT;
}

class Extraction {
public:
    Extraction(const fs::path& archive, const fs::path& into, const CancellationToken& cancellation,
               OperationProgressTracker& progress)
        : archive_(archive), into_(into), cancellation_(cancellation), progress_(progress)
    {
    }

    OperationReport run()
    {
        OwnedFd archiveFd(::open(archive_.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
        if (!archiveFd.isOpen())
            return aborted(FileOperationError::system(errno, "read", archive_).errorDescription());
        auto list = entries(archiveFd.get());
        if (!list)
            return aborted(list.error().errorDescription());
        std::vector<const Entry*> members;
        std::int64_t bytes = 0;
        for (const auto& entry : *list) {
            if (isResourceFork(entry.name))
                continue;
            members.push_back(&entry);
            bytes += entry.uncompressedSize;
        }
        if (members.empty())
            return std::move(report_);
        progress_.update([&](OperationProgress& p) {
            p.totalItems = static_cast<std::int64_t>(members.size());
            p.totalBytes = bytes;
            p.phase = OperationProgress::Phase::working;
        });

        destination_ = OwnedFd(::open(into_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!destination_.isOpen())
            return failed(into_, FileOperationError::system(errno, "write into", into_));
        auto staging = StagingTree::create(destination_.get(), ".ob-extract-" + Uuid::random());
        if (!staging)
            return failed(into_, FileOperationError::system(staging.error(), "write into", into_));
        staging_.emplace(std::move(*staging));

        for (const Entry* entry : members) {
            if (cancellation_.isCancelled())
                return cancelled();
            progress_.update([&](OperationProgress& p) { p.setCurrentPath(entry->name); });
            if (auto stop = extractMember(archiveFd.get(), *entry))
                return *stop ? aborted(std::move(**stop)) : cancelled();
            progress_.update([](OperationProgress& p) { ++p.completedItems; });
        }
        createLinks();
        if (cancellation_.isCancelled())
            return cancelled();
        verifyLinks();
        moveIntoPlace();
        progress_.update([](OperationProgress& p) { p.phase = OperationProgress::Phase::finished; });
        return std::move(report_);
    }

private:
    // What stops the whole run: a reason, or nothing for a cancel.
    using Stop = std::optional<std::string>;

    OperationReport aborted(std::string reason)
    {
        staging_.reset();
        report_.abortReason = std::move(reason);
        return std::move(report_);
    }
    OperationReport cancelled()
    {
        staging_.reset();
        report_.cancelled = true;
        return std::move(report_);
    }
    OperationReport failed(const fs::path& path, AnyError error)
    {
        staging_.reset();
        report_.failures.push_back({path, std::move(error)});
        return std::move(report_);
    }
    void memberFailed(const Entry& entry, AnyError error)
    {
        // Joined as text: a hostile absolute name must not turn into a path of its own.
        report_.failures.push_back({fs::path(archive_.native() + "/" + entry.name), std::move(error)});
    }

    std::optional<Stop> extractMember(int archiveFd, const Entry& entry)
    {
        // Encryption is tested first: its data is nothing we could check.
        if (entry.isEncrypted()) {
            memberFailed(entry, ZipError::encrypted(entry.name));
            return std::nullopt;
        }
        const auto components = ZipNames::safeComponents(entry.name);
        if (!components) {
            memberFailed(entry, ZipError::unsafePath(entry.name));
            return std::nullopt;
        }
        const auto modified = DOSDate::decode(entry.dosTime, entry.dosDate);
        if (entry.isFolder()) {
            if (auto made = staging_->folder(*components); !made) {
                memberFailed(entry, FileOperationError::system(made.error(), "create the folder", entry.name));
                return std::nullopt;
            }
            staging_->setFolderAttributes(*components, {static_cast<mode_t>(entry.permissions(0755)), modified});
            return std::nullopt;
        }
        if (entry.isLink()) {
            if (entry.uncompressedSize > longestLinkText) {
                memberFailed(entry, ZipError::corrupt(entry.name));
                return std::nullopt;
            }
            std::string target;
            auto read = readData(
                archiveFd, entry, cancellation_,
                [&](std::string_view block) {
                    target.append(block);
                    return 0;
                },
                &inflater_);
            if (!read)
                return readFailed(entry, read.error());
            links_.push_back({*components, std::move(target), &entry});
            return std::nullopt;
        }
        auto file = staging_->createFile(*components);
        if (!file) {
            if (endsTheRun(file.error()))
                return Stop{FileOperationError::system(file.error(), "create the file", entry.name).errorDescription()};
            memberFailed(entry, FileOperationError::system(file.error(), "create the file", entry.name));
            return std::nullopt;
        }
        const int fd = file->get();
        auto read = readData(
            archiveFd, entry, cancellation_,
            [&](std::string_view block) {
                std::size_t done = 0;
                while (done < block.size()) {
                    const auto n = ::write(fd, block.data() + done, block.size() - done);
                    if (n < 0 && errno == EINTR)
                        continue;
                    if (n <= 0)
                        return n < 0 ? errno : EIO;
                    done += static_cast<std::size_t>(n);
                }
                progress_.update(
                    [&](OperationProgress& p) { p.completedBytes += static_cast<std::int64_t>(block.size()); });
                return 0;
            },
            &inflater_);
        if (read) {
            ::fchmod(fd, entry.permissions(0644));
            if (modified) {
                const timespec times[2] = {{*modified, 0}, {*modified, 0}};
                ::futimens(fd, times);
            }
            if (const int error = file->close(); error != 0)
                read = std::unexpected(ReadFailure{std::nullopt, error});
        }
        if (!read) {
            file->reset();
            staging_->removeFile(*components);
            return readFailed(entry, read.error());
        }
        return std::nullopt;
    }

    std::optional<Stop> readFailed(const Entry& entry, const ReadFailure& failure)
    {
        if (failure.zip) {
            memberFailed(entry, *failure.zip);
            return std::nullopt;
        }
        if (failure.code == ECANCELED)
            return Stop{};
        const auto error = FileOperationError::system(failure.code, "write into", entry.name);
        if (endsTheRun(failure.code))
            return Stop{error.errorDescription()};
        memberFailed(entry, error);
        return std::nullopt;
    }

    // Links come after every file and folder, so that no member is ever written through one.
    void createLinks()
    {
        for (const auto& link : links_) {
            if (!ZipNames::linkStaysInside(link.components.size() - 1, link.target)) {
                memberFailed(*link.entry, ZipError::unsafeLink(link.entry->name));
                continue;
            }
            const auto modified = DOSDate::decode(link.entry->dosTime, link.entry->dosDate);
            if (auto made = staging_->createLink(link.components, link.target, modified); !made) {
                memberFailed(*link.entry,
                             FileOperationError::system(made.error(), "create the link", link.entry->name));
                continue;
            }
            created_.push_back(&link);
        }
    }

    // Each link on its own looked harmless; together (a link through a link) they may not be. The
    // result's extent depends on how many top items remain, so this runs until that settles.
    void verifyLinks()
    {
        for (;;) {
            const std::size_t minimumDepth = staging_->topNames().size() == 1 ? 1 : 0;
            std::vector<const PendingLink*> kept;
            for (const PendingLink* link : created_) {
                if (staging_->linkResolvesInside(link->components, minimumDepth)) {
                    kept.push_back(link);
                } else {
                    staging_->removeLink(link->components);
                    memberFailed(*link->entry, ZipError::unsafeLink(link->entry->name));
                }
            }
            const bool removed = kept.size() != created_.size();
            created_ = std::move(kept);
            if (!removed || minimumDepth == 1)
                return;
        }
    }

    void moveIntoPlace()
    {
        const auto names = staging_->topNames();
        if (names.empty())
            return;
        const bool single = names.size() == 1;
        std::string wanted;
        bool isFolder = true;
        if (single) {
            wanted = names.front();
            struct stat status {};
            isFolder = ::fstatat(staging_->rootFd(), wanted.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                       S_ISDIR(status.st_mode);
        } else {
            wanted = NameGenerator::splitExtension(archive_.filename().native(), false).stem;
            ::fchmod(staging_->rootFd(), 0755);
        }
        const int fromDir = single ? staging_->rootFd() : destination_.get();
        const std::string fromName = single ? names.front() : staging_->name();
        std::set<std::string> tried;
        std::string candidate = wanted;
        for (int attempt = 0;; ++attempt) {
            auto moved = ExclusiveRename::renameAt(fromDir, fromName, destination_.get(), candidate);
            if (moved)
                break;
            if (moved.error() != EEXIST || attempt + 1 >= nameAttempts) {
                const int code = moved.error() == EEXIST ? EEXIST : moved.error();
                report_.failures.push_back(
                    {into_ / candidate,
                     FileOperationError::system(code, "move the extracted item", into_ / candidate)});
                staging_->remove();
                return;
            }
            tried.insert(candidate);
            const int destination = destination_.get();
            candidate = NameGenerator::keepBothName(wanted, isFolder, [&](const std::string& name) {
                struct stat status {};
                return tried.contains(name) || ::fstatat(destination, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
            });
        }
        if (single) {
            staging_->applyFolderAttributes(destination_.get(), candidate);
            staging_->remove();
        } else {
            staging_->release();
            OwnedFd result(
                ::openat(destination_.get(), candidate.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            if (result.isOpen())
                staging_->applyFolderAttributes(result.get(), std::nullopt);
        }
        const fs::path result = into_ / candidate;
        report_.completed.push_back({archive_, result});
        report_.undoChanges.push_back(UndoChange::created(result, ItemStamp::of(result)));
    }

    const fs::path& archive_;
    const fs::path& into_;
    const CancellationToken& cancellation_;
    OperationProgressTracker& progress_;
    OperationReport report_;
    OwnedFd destination_;
    std::optional<StagingTree> staging_;
    std::vector<PendingLink> links_;
    std::vector<const PendingLink*> created_;
    std::optional<DeflateStream> inflater_;
};

} // namespace

OperationReport extract(const fs::path& archive, const fs::path& into, const CancellationToken& cancellation,
                        OperationProgressTracker& progress)
{
    try {
        return Extraction(archive, into, cancellation, progress).run();
    } catch (const std::exception& e) {
        // Only allocation failures reach here; the staging folder went with the Extraction.
        OperationReport report;
        report.abortReason = e.what();
        return report;
    }
}

} // namespace orbisk::ZipReader
