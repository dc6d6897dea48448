#include "runtime/SignalBridge.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <atomic>
#include <cerrno>
#include <utility>

#include "base/Check.h"

namespace lumora::app {

namespace {

// The one piece of process-wide state here: an asynchronous signal handler can reach nothing
// but a global, so the pipe's write end lives in one lock-free atomic.
std::atomic<int> signalPipe{-1};
static_assert(std::atomic<int>::is_always_lock_free);

// Signal numbers read from the pipe per call.
constexpr std::size_t kDrainChunk = 16;

extern "C" void forwardSignal(int signalNumber) {
    const int savedErrno = errno;
    const int fd = signalPipe.load(std::memory_order_relaxed);
    if (fd >= 0) {
        const auto byte = static_cast<unsigned char>(signalNumber);
        // A full pipe drops the byte: the signals before it are still waiting to be handled.
        [[maybe_unused]] const ssize_t written = ::write(fd, &byte, 1);
    }
    errno = savedErrno;
}

bool makeNonBlocking(int fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    return flags >= 0 && ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) == 0 &&
           ::fcntl(fd, F_SETFD, FD_CLOEXEC) == 0;
}

}  // namespace

SignalBridge::SignalBridge(Handler handler) : handler_(std::move(handler)) {
    check(signalPipe.load() < 0, "only one SignalBridge at a time");
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0) return;
    readEnd_ = ends[0];
    writeEnd_ = ends[1];
    if (!makeNonBlocking(readEnd_) || !makeNonBlocking(writeEnd_)) return;

    notifier_ = std::make_unique<QSocketNotifier>(readEnd_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { drain(); });
    signalPipe.store(writeEnd_);

    struct sigaction action {};
    action.sa_handler = forwardSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        ::sigaction(kSignals[i], &action, &previous_[i]);
    }
    installed_ = true;
}

SignalBridge::~SignalBridge() {
    if (installed_) {
        for (std::size_t i = 0; i < std::size(kSignals); ++i) {
            ::sigaction(kSignals[i], &previous_[i], nullptr);
        }
        signalPipe.store(-1);
    }
    notifier_.reset();
    if (readEnd_ >= 0) ::close(readEnd_);
    if (writeEnd_ >= 0) ::close(writeEnd_);
}

void SignalBridge::drain() {
    unsigned char numbers[kDrainChunk];
    for (;;) {
        const ssize_t n = ::read(readEnd_, numbers, sizeof numbers);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        for (ssize_t i = 0; i < n; ++i) {
            if (handler_) handler_(numbers[i]);
        }
    }
}

}  // namespace lumora::app
