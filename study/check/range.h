#pragma once

namespace study {

/// A figure that is estimated.
struct Range
{
    double low = 0;
    double middle = 0;
    double high = 0;

    static Range exactly(double figure) { return {.low = figure, .middle = figure, .high = figure}; }

    Range &operator+=(const Range &other)
    {
        low += other.low;
        middle += other.middle;
        high += other.high;
        return *this;
    }
    friend Range operator+(Range a, const Range &b) { return a += b; }
    /// Low by low, middle by middle, high by high.
    friend Range operator*(const Range &a, const Range &b)
    {
        return {.low = a.low * b.low, .middle = a.middle * b.middle, .high = a.high * b.high};
    }
    bool operator==(const Range &) const = default;
};

} // namespace study
