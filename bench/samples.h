#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

/// What time is taken of: the work of this process alone, whatever else the machine does, or all that passes.
enum class Clock { Processor, Wall };

/// In seconds, from any beginning.
inline double now(Clock clock)
{
    if (clock == Clock::Processor)
        return double(std::clock()) / CLOCKS_PER_SEC;
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Times of one thing, in seconds. The median stands for them: what else the machine does adds to some of them only.
class Samples
{
public:
    explicit Samples(Clock which = Clock::Processor)
        : clock(which)
    {
    }

    void add(double seconds) { values.push_back(seconds); }

    /// Calls a function, notes how long it took and gives that.
    template<typename Function>
    double time(const Function &function)
    {
        const double begin = now(clock);
        function();
        add(now(clock) - begin);
        return values.back();
    }

    double median() const
    {
        std::vector<double> sorted = values;
        const auto middle = sorted.begin() + std::ptrdiff_t(sorted.size() / 2);
        std::ranges::nth_element(sorted, middle);
        return sorted.empty() ? 0.0 : *middle;
    }

    double most() const { return values.empty() ? 0.0 : *std::ranges::max_element(values); }

private:
    Clock clock;
    std::vector<double> values;
};
