#include "study/statistics/likeness.h"

#include "study/statistics/words.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <unordered_map>
#include <vector>

namespace study {

namespace {

/// The shingles of a text, sorted and each once.
using Shingles = std::vector<std::uint64_t>;

constexpr qsizetype shingleWords = 3;

/// Spreads the bits of a number over all 64.
std::uint64_t mixed(std::uint64_t bits)
{
    bits = (bits ^ (bits >> 31)) * 0x9e3779b97f4a7c15U;
    bits = (bits ^ (bits >> 29)) * 0xd1342543de82ef95U;
    return bits ^ (bits >> 32);
}

Shingles shinglesOf(const QString &text)
{
    std::vector<std::uint64_t> words;
    for (const QStringList list = wordsOf(text.left(comparedLength)); const QString &word : list)
        words.push_back(qHash(word, 0));
    Shingles shingles;
    const size_t length = std::min(words.size(), size_t(shingleWords));
    for (size_t from = 0; length > 0 && from + length <= words.size(); ++from) {
        std::uint64_t hash = 0;
        for (size_t word = from; word < from + length; ++word)
            hash = mixed(hash + words[word]);
        shingles.push_back(hash);
    }
    std::sort(shingles.begin(), shingles.end());
    shingles.erase(std::unique(shingles.begin(), shingles.end()), shingles.end());
    return shingles;
}

double likenessOf(const Shingles &one, const Shingles &other)
{
    double both = 0;
    for (size_t a = 0, b = 0; a < one.size() && b < other.size();) {
        if (one[a] == other[b]) {
            both += 1;
            ++a;
            ++b;
        } else if (one[a] < other[b]) {
            ++a;
        } else {
            ++b;
        }
    }
    return both / (double(one.size() + other.size()) - both);
}

/// Gives the shingles of all texts other numbers, the rarest the smallest. What two texts share is rare first then.
void numberByRarity(std::vector<Shingles> &texts)
{
    std::unordered_map<std::uint64_t, std::uint64_t> counts;
    for (const Shingles &shingles : texts) {
        for (const std::uint64_t shingle : shingles)
            ++counts[shingle];
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> order;
    order.reserve(counts.size());
    for (const auto &[shingle, count] : counts)
        order.emplace_back(count, shingle);
    std::sort(order.begin(), order.end());
    for (size_t place = 0; place < order.size(); ++place)
        counts[order[place].second] = place;
    for (Shingles &shingles : texts) {
        std::transform(shingles.begin(), shingles.end(), shingles.begin(),
                       [&counts](std::uint64_t shingle) { return counts[shingle]; });
        std::sort(shingles.begin(), shingles.end());
    }
}

/// Groups that grow together.
class Groups
{
public:
    explicit Groups(qsizetype size)
        : parents(size_t(size))
        , weakest(size_t(size), 1.0)
    {
        std::iota(parents.begin(), parents.end(), 0);
    }

    int groupOf(int place)
    {
        while (parents[size_t(place)] != place)
            place = parents[size_t(place)] = parents[size_t(parents[size_t(place)])];
        return place;
    }

    void join(int one, int other, double likeness)
    {
        const int kept = groupOf(one);
        const int gone = groupOf(other);
        weakest[size_t(kept)] = std::min({weakest[size_t(kept)], weakest[size_t(gone)], likeness});
        parents[size_t(gone)] = kept;
    }

    double leastOf(int group) const { return weakest[size_t(group)]; }

private:
    std::vector<int> parents;
    std::vector<double> weakest;
};

/// Finds the texts that are alike without holding each against each: two that are have one of their rarest shingles in
/// common, among so many of them that what is left of either is too little. The shorter come first.
class Search
{
public:
    Search(const std::vector<Shingles> &shingles, double least, Groups &groups)
        : texts(shingles)
        , threshold(least)
        , found(groups)
        , seen(shingles.size(), -1)
    {
    }

    void run()
    {
        std::vector<int> order(texts.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [this](int a, int b) { return size(a) < size(b); });
        for (const int text : order) {
            const Shingles &shingles = texts[size_t(text)];
            const size_t needed = size_t(std::ceil((threshold * double(shingles.size())) - 1e-9));
            const size_t rarest = shingles.size() - std::min(needed, shingles.size()) + 1;
            for (size_t at = 0; at < std::min(rarest, shingles.size()); ++at) {
                std::vector<int> &holders = index[shingles[at]];
                for (const int holder : holders)
                    compare(text, holder);
                holders.push_back(text);
            }
        }
    }

private:
    size_t size(int text) const { return texts[size_t(text)].size(); }

    void compare(int text, int shorter)
    {
        if (seen[size_t(shorter)] == text)
            return;
        seen[size_t(shorter)] = text;
        if (double(size(shorter)) < (threshold * double(size(text))) - 1e-9 ||
            found.groupOf(text) == found.groupOf(shorter))
            return;
        const double alike = likenessOf(texts[size_t(text)], texts[size_t(shorter)]);
        if (alike >= threshold)
            found.join(text, shorter, alike);
    }

    const std::vector<Shingles> &texts;
    const double threshold;
    Groups &found;
    std::vector<int> seen; ///< the text that each was held against last
    std::unordered_map<std::uint64_t, std::vector<int>> index;
};

} // namespace

std::optional<double> likeness(const QString &one, const QString &other)
{
    const Shingles shingles = shinglesOf(one);
    const Shingles others = shinglesOf(other);
    if (shingles.empty() || others.empty())
        return std::nullopt;
    return likenessOf(shingles, others);
}

QList<AlikeTexts> alikeTexts(const QStringList &texts, double least)
{
    std::vector<Shingles> shingles;
    for (const QString &text : texts)
        shingles.push_back(shinglesOf(text));
    numberByRarity(shingles);
    Groups groups(texts.size());
    Search(shingles, least, groups).run();

    QHash<int, qsizetype> found;
    QList<AlikeTexts> alike;
    for (int place = 0; place < texts.size(); ++place) {
        const int group = groups.groupOf(place);
        if (!found.contains(group)) {
            found.insert(group, alike.size());
            alike.append({.places = {}, .least = groups.leastOf(group), .same = true});
        }
        AlikeTexts &entry = alike[found.value(group)];
        entry.places << place;
        entry.same = entry.same && texts.at(place) == texts.at(entry.places.first());
    }
    alike.removeIf([](const AlikeTexts &group) { return group.places.size() < 2; });
    std::stable_sort(alike.begin(), alike.end(),
                     [](const AlikeTexts &a, const AlikeTexts &b) { return a.places.size() > b.places.size(); });
    return alike;
}

} // namespace study
