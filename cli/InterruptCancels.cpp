#include "InterruptCancels.h"

#include <signal.h>

#include <atomic>

namespace orbisk::cli {
namespace {

// Only lock-free atomics are touched from the handler, which is async-signal-safe.
std::atomic<CancellationToken*> current = nullptr;
std::atomic<bool> signalled = false;
struct sigaction previousInterrupt {};
struct sigaction previousTerminate {};

extern "C" void cancelCurrent(int)
{
    signalled = true;
    if (auto* token = current.load())
        token->cancel();
}

} // namespace

InterruptCancels::InterruptCancels(CancellationToken& token)
{
    current = &token;
    signalled = false;
    struct sigaction action {};
    action.sa_handler = cancelCurrent;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, &previousInterrupt);
    ::sigaction(SIGTERM, &action, &previousTerminate);
}

InterruptCancels::~InterruptCancels()
{
    ::sigaction(SIGINT, &previousInterrupt, nullptr);
    ::sigaction(SIGTERM, &previousTerminate, nullptr);
    current = nullptr;
}

bool InterruptCancels::interrupted()
{
    return signalled;
}

} // namespace orbisk::cli
