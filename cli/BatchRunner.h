#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace quilo::cli {

// Runs work(i) for i in [0, count) on up to `jobs` threads. Each item is
// independent, so the results do not depend on the number of threads.
// report(i, failure) is called on the calling thread in item order, as soon
// as an item and all before it are done; `failure` is empty on success.
// True when every item succeeded.
bool runBatch(std::size_t count, int jobs, const std::function<std::string(std::size_t)>& work,
              const std::function<void(std::size_t, const std::string&)>& report);

// The progress line of a batch on a terminal ("[3/20] photo.jpg"), redrawn in
// place, and a line per failure that stays.
class BatchProgress {
public:
    BatchProgress(std::size_t count, bool onTerminal) : count_(count), onTerminal_(onTerminal) {}
    void report(std::size_t index, const std::string& name, const std::string& failure);
    void finish();

private:
    std::size_t count_;
    bool onTerminal_;
    std::size_t failures_ = 0;
};

} // namespace quilo::cli
