#ifndef VESK_VESKKIT_INTERNAL_PARALLEL_H
#define VESK_VESKKIT_INTERNAL_PARALLEL_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <limits>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace Vesk::Kit::internal {

/// How many threads `threads` stands for: 0 is one for each processor.
inline unsigned threadsFor(unsigned threads) {
    return threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency());
}

/// Calls task(i) for i = 0 .. count-1, each once, on that many threads (see `threadsFor`), this one
/// among them; fewer where the system gives no more. A task must only write what is its own.
///
/// Where tasks throw, none begins any more, and the exception of the lowest i is thrown once those
/// under way have ended: the same at any number of threads.
template <typename Task>
void parallelFor(std::size_t count, unsigned threads, Task task) {
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> failed = false;
    std::mutex guard;
    std::size_t lowest = std::numeric_limits<std::size_t>::max();
    std::exception_ptr exception;

    const auto work = [&] {
        while (!failed) {
            const std::size_t i = next++;
            if (i >= count) return;
            try {
                task(i);
            } catch (...) {
                const std::lock_guard<std::mutex> lock(guard);
                failed = true;
                if (i > lowest) continue;
                lowest = i;
                exception = std::current_exception();
            }
        }
    };

    // The threads that there are do the work, where the system or the memory gives no more.
    std::vector<std::thread> others;
    const std::size_t wanted = std::min<std::size_t>(threadsFor(threads), count);
    try {
        while (others.size() + 1 < wanted) others.emplace_back(work);
    } catch (const std::system_error&) {
    } catch (const std::bad_alloc&) {
    }
    work();
    for (std::thread& other : others) other.join();
    if (exception) std::rethrow_exception(exception);
}

}  // namespace Vesk::Kit::internal

#endif
