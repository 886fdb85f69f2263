#include "operations/FileCopyQueue.h"

#include <algorithm>

#include "platform/FileCopier.h"

namespace orbisk {

namespace {

// Enough copies queued ahead to keep every worker busy while the caller reads folders and takes
// results, few enough that the queue's memory does not matter.
constexpr std::size_t copiesPerWorker = 16;

} // namespace

FileCopyQueue::FileCopyQueue(std::size_t workers, Progress progress)
    : progress_(std::move(progress)), limit_(std::max<std::size_t>(workers, 1) * copiesPerWorker)
{
    for (std::size_t i = 0; i < std::max<std::size_t>(workers, 1); ++i)
        workers_.emplace_back([this] { work(); });
}

FileCopyQueue::~FileCopyQueue()
{
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
    }
    queued_.notify_all();
    workers_.clear(); // joins; a copy under way finishes first
}

std::size_t FileCopyQueue::defaultWorkers()
{
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 4);
}

void FileCopyQueue::push(Job job)
{
    bool wake = false;
    {
        std::lock_guard guard(lock_);
        slots_.push_back(Slot{std::move(job), std::nullopt});
        wake = idleWorkers_ > 0;
    }
    if (wake)
        queued_.notify_one();
}

bool FileCopyQueue::full() const
{
    std::lock_guard guard(lock_);
    return slots_.size() >= limit_;
}

std::vector<FileCopyQueue::Done> FileCopyQueue::takeFinished(bool all)
{
    std::vector<Done> taken;
    std::unique_lock guard(lock_);
    // Counting finished copies anywhere in the queue is cheap for the workers; whether they are
    // the front ones is checked here after waking.
    const std::size_t wanted = all ? slots_.size() : std::min(slots_.size(), limit_ / 2);
    while (true) {
        while (taken.size() < wanted && !slots_.empty() && slots_.front().done) {
            taken.push_back(std::move(*slots_.front().done));
            slots_.pop_front();
            --nextToStart_;
            --finishedCount_;
        }
        if (taken.size() >= wanted || slots_.empty())
            break;
        awaited_ = std::min(wanted - taken.size(), slots_.size());
        finished_.wait(guard, [this] { return finishedCount_ >= awaited_ && slots_.front().done; });
        awaited_ = 0;
    }
    return taken;
}

void FileCopyQueue::work()
{
    std::unique_lock guard(lock_);
    for (;;) {
        ++idleWorkers_;
        queued_.wait(guard, [this] { return stopping_ || nextToStart_ < slots_.size(); });
        --idleWorkers_;
        if (stopping_)
            return;
        Slot& slot = slots_[nextToStart_++];
        guard.unlock();

        const Job& job = slot.job;
        std::int64_t reported = 0;
        const auto onBytes = [&](std::int64_t done) {
            const std::int64_t added = done - reported;
            reported = done;
            return progress_ ? progress_(job.source, added) : CopyControl::proceed;
        };
        Done done{{}, CopyOutcome::copied, {}, job.options.firstMethod};
        CopyOptions options = job.options;
        options.learnedMethod = &done.learned;
        // The caller listed the entry as a regular file; the copier checks what it opens.
        struct stat listed {};
        listed.st_mode = S_IFREG;
        const auto name = job.source.filename();
        done.result = FileCopier::copyFileAt({job.fromFolder->get(), name.c_str(), job.source},
                                             {job.toFolder->get(), name.c_str(), job.destination}, onBytes, options,
                                             &listed, &done.status);

        guard.lock();
        done.job = std::move(slot.job);
        slot.done = std::move(done);
        ++finishedCount_;
        if (awaited_ > 0 && finishedCount_ >= awaited_)
            finished_.notify_one();
    }
}

} // namespace orbisk
