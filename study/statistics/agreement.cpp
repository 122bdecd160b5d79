#include "study/statistics/agreement.h"

#include <QHash>

namespace study {

std::optional<Agreement> agreement(const QList<int> &one, const QList<int> &other)
{
    if (one.size() != other.size())
        return std::nullopt;
    struct Times
    {
        double one = 0;
        double other = 0;
    };
    QHash<int, Times> times;
    double pairs = 0;
    double same = 0;
    for (qsizetype pair = 0; pair < one.size(); ++pair) {
        if (one.at(pair) < 0 || other.at(pair) < 0)
            continue;
        pairs += 1;
        same += one.at(pair) == other.at(pair) ? 1 : 0;
        times[one.at(pair)].one += 1;
        times[other.at(pair)].other += 1;
    }
    if (pairs == 0)
        return std::nullopt;
    // Whole numbers, so that the order in which the hash has them is all the same.
    double byChance = 0;
    for (const Times &code : std::as_const(times))
        byChance += code.one * code.other;
    Agreement found{.pairs = int(pairs), .share = same / pairs, .kappa = std::nullopt};
    if (byChance < pairs * pairs)
        found.kappa = ((same * pairs) - byChance) / ((pairs * pairs) - byChance);
    return found;
}

} // namespace study
