#include "Interruption.h"

#include <csignal>

#include <array>
#include <atomic>

namespace orbisk::cli {

namespace {

constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP};
std::atomic<CancellationToken*> current = nullptr;
volatile std::sig_atomic_t received = 0;
std::array<struct sigaction, signals.size()> previous{};

static_assert(std::atomic<bool>::is_always_lock_free, "cancelling from a signal handler needs a lock-free flag");

extern "C" void onSignal(int)
{
    received = 1;
    if (CancellationToken* token = current.load())
        token->cancel();
}

} // namespace

CancelOnInterrupt::CancelOnInterrupt(CancellationToken& token)
{
    current = &token;
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signals.size(); ++i)
        ::sigaction(signals[i], &action, &previous[i]);
}

CancelOnInterrupt::~CancelOnInterrupt()
{
    for (std::size_t i = 0; i < signals.size(); ++i)
        ::sigaction(signals[i], &previous[i], nullptr);
    current = nullptr;
}

bool CancelOnInterrupt::interrupted()
{
    return received != 0;
}

} // namespace orbisk::cli
