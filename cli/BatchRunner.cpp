#include "cli/BatchRunner.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace quilo::cli {

bool runBatch(std::size_t count, int jobs, const std::function<std::string(std::size_t)>& work,
              const std::function<void(std::size_t, const std::string&)>& report)
{
    std::vector<std::optional<std::string>> results(count);
    std::mutex mutex;
    std::condition_variable done;
    std::atomic<std::size_t> next{0};
    auto worker = [&] {
        for (std::size_t i = next++; i < count; i = next++) {
            std::string failure = work(i);
            std::lock_guard lock(mutex);
            results[i] = std::move(failure);
            done.notify_one();
        }
    };
    std::vector<std::jthread> threads;
    for (int t = 0; t < std::min<int>(jobs, int(count)); ++t)
        threads.emplace_back(worker);

    bool allSucceeded = true;
    for (std::size_t i = 0; i < count; ++i) {
        std::unique_lock lock(mutex);
        done.wait(lock, [&] { return results[i].has_value(); });
        const std::string failure = *results[i];
        lock.unlock();
        allSucceeded = allSucceeded && failure.empty();
        report(i, failure);
    }
    return allSucceeded;
}

void BatchProgress::report(std::size_t index, const std::string& name, const std::string& failure)
{
    if (onTerminal_)
        std::fprintf(stderr, "\r\033[K");
    if (!failure.empty()) {
        ++failures_;
        std::fprintf(stderr, "quilo icns: %s: %s\n", name.c_str(), failure.c_str());
    }
    if (onTerminal_)
        std::fprintf(stderr, "[%zu/%zu] %s", index + 1, count_, name.c_str());
    std::fflush(stderr);
}

void BatchProgress::finish()
{
    if (onTerminal_)
        std::fprintf(stderr, "\r\033[K");
    std::fprintf(stderr, "%zu of %zu pictures made into .icns files\n", count_ - failures_, count_);
}

} // namespace quilo::cli
