#include "authoring/check/alignment.h"

#include <algorithm>
#include <cassert>
#include <unordered_map>

namespace {

struct span_of_items {
    uint32_t begin;
    uint32_t end; // the first one behind it
};

struct aligner {
    const std::vector<uint32_t>& a_keys;
    const std::vector<uint32_t>& b_keys;
    item_likeness likeness;
    void* context;
    std::vector<uint32_t> b_of_a; // no_item: none
    std::vector<uint32_t> a_of_b;
};

} // namespace

static void pair_up(aligner& all, uint32_t a, uint32_t b)
{
    assert(all.b_of_a[a] == no_item && all.a_of_b[b] == no_item);
    all.b_of_a[a] = b;
    all.a_of_b[b] = a;
}

static uint32_t size_of(span_of_items items)
{
    return items.end - items.begin;
}

// ---- what both share in one order ---------------------------------------------------

// Lengths of the longest common order of what lies behind each pair of items.
static void pair_longest_order(aligner& all, span_of_items a, span_of_items b)
{
    const size_t rows = size_of(a) + 1;
    const size_t columns = size_of(b) + 1;
    std::vector<uint16_t> lengths(rows * columns, 0);
    const auto length = [&](size_t row, size_t column) -> uint16_t& { return lengths[row * columns + column]; };
    const auto same
        = [&](size_t row, size_t column) { return all.a_keys[a.begin + row] == all.b_keys[b.begin + column]; };
    for (size_t row = rows - 1; row-- > 0;)
        for (size_t column = columns - 1; column-- > 0;)
            length(row, column) = same(row, column) ? static_cast<uint16_t>(length(row + 1, column + 1) + 1)
                                                    : std::max(length(row + 1, column), length(row, column + 1));
    size_t row = 0;
    size_t column = 0;
    while (row + 1 < rows && column + 1 < columns) {
        if (same(row, column))
            pair_up(all, a.begin + static_cast<uint32_t>(row++), b.begin + static_cast<uint32_t>(column++));
        else if (length(row + 1, column) >= length(row, column + 1))
            ++row;
        else
            ++column;
    }
}

static void pair_equal_items(aligner& all)
{
    span_of_items a = {0, static_cast<uint32_t>(all.a_keys.size())};
    span_of_items b = {0, static_cast<uint32_t>(all.b_keys.size())};
    while (a.begin < a.end && b.begin < b.end && all.a_keys[a.begin] == all.b_keys[b.begin])
        pair_up(all, a.begin++, b.begin++);
    while (a.begin < a.end && b.begin < b.end && all.a_keys[a.end - 1] == all.b_keys[b.end - 1])
        pair_up(all, --a.end, --b.end);
    pair_longest_order(all, a, b);
}

// ---- what lies between -----------------------------------------------------------------

constexpr uint32_t alike = 500;          // half
constexpr uint64_t most_compared = 4096; // pairs of one gap

// The order of pairs that are most alike together. Every likeness is asked once.
static void pair_alike(aligner& all, span_of_items a, span_of_items b)
{
    const size_t rows = size_of(a) + 1;
    const size_t columns = size_of(b) + 1;
    std::vector<uint32_t> sums(rows * columns, 0);
    std::vector<uint32_t> likenesses(rows * columns, 0);
    for (size_t row = rows - 1; row-- > 0;)
        for (size_t column = columns - 1; column-- > 0;) {
            const size_t at = row * columns + column;
            likenesses[at] = all.likeness(
                all.context, a.begin + static_cast<uint32_t>(row), b.begin + static_cast<uint32_t>(column));
            const uint32_t paired = likenesses[at] >= alike ? sums[at + columns + 1] + likenesses[at] : 0;
            sums[at] = std::max({paired, sums[at + columns], sums[at + 1]});
        }
    size_t row = 0;
    size_t column = 0;
    while (row + 1 < rows && column + 1 < columns) {
        const size_t at = row * columns + column;
        if (likenesses[at] >= alike && sums[at] == sums[at + columns + 1] + likenesses[at])
            pair_up(all, a.begin + static_cast<uint32_t>(row++), b.begin + static_cast<uint32_t>(column++));
        else if (sums[at] == sums[at + columns])
            ++row;
        else
            ++column;
    }
}

static void pair_gap(aligner& all, span_of_items a, span_of_items b)
{
    if (size_of(a) == 0 || size_of(b) == 0)
        return;
    if (size_of(a) == 1 && size_of(b) == 1)
        return pair_up(all, a.begin, b.begin);
    if (uint64_t{size_of(a)} * size_of(b) <= most_compared)
        return pair_alike(all, a, b);
    for (uint32_t index = 0; index < std::min(size_of(a), size_of(b)); ++index)
        pair_up(all, a.begin + index, b.begin + index);
}

// Items without a pair, whose key stands among those of the other list without one.
static std::vector<uint32_t> pair_moved(aligner& all)
{
    std::unordered_multimap<uint32_t, uint32_t> waiting;
    for (uint32_t a = static_cast<uint32_t>(all.a_keys.size()); a-- > 0;)
        if (all.b_of_a[a] == no_item)
            waiting.emplace(all.a_keys[a], a);
    std::vector<uint32_t> moved; // of b
    for (uint32_t b = 0; b < all.b_keys.size(); ++b) {
        const auto found = all.a_of_b[b] == no_item ? waiting.find(all.b_keys[b]) : waiting.end();
        if (found == waiting.end())
            continue;
        pair_up(all, found->second, b);
        waiting.erase(found);
        moved.push_back(b);
    }
    return moved;
}

// Gaps lie between pairs of both lists. Those that have moved are no bounds of gaps, and in none.
static void pair_gaps(aligner& all, const std::vector<uint32_t>& moved)
{
    const auto a_count = static_cast<uint32_t>(all.a_keys.size());
    const auto b_count = static_cast<uint32_t>(all.b_keys.size());
    const auto has_moved = [&moved](uint32_t b) { return std::binary_search(moved.begin(), moved.end(), b); };
    uint32_t a = 0;
    uint32_t b = 0;
    while (a < a_count && b < b_count) {
        if (all.b_of_a[a] != no_item && has_moved(all.b_of_a[a])) {
            ++a;
        } else if (has_moved(b)) {
            ++b;
        } else if (all.b_of_a[a] == b) {
            ++a;
            ++b;
        } else {
            span_of_items in_a = {a, a};
            span_of_items in_b = {b, b};
            while (in_a.end < a_count && all.b_of_a[in_a.end] == no_item)
                ++in_a.end;
            while (in_b.end < b_count && all.a_of_b[in_b.end] == no_item)
                ++in_b.end;
            assert(size_of(in_a) + size_of(in_b) > 0); // pairs of one order do not cross
            pair_gap(all, in_a, in_b);
            a = in_a.end;
            b = in_b.end;
        }
    }
}

std::vector<aligned_items> align_items(
    const std::vector<uint32_t>& a_keys, const std::vector<uint32_t>& b_keys, item_likeness likeness, void* context)
{
    assert(likeness != nullptr);
    aligner all = {a_keys, b_keys, likeness, context, std::vector<uint32_t>(a_keys.size(), no_item),
        std::vector<uint32_t>(b_keys.size(), no_item)};
    pair_equal_items(all);
    const std::vector<uint32_t> moved = pair_moved(all);
    pair_gaps(all, moved);

    std::vector<aligned_items> result;
    uint32_t next_a = 0;
    const auto add_lonely_before = [&](uint32_t end) {
        for (; next_a < end; ++next_a)
            if (all.b_of_a[next_a] == no_item)
                result.push_back({next_a, no_item, false});
    };
    for (uint32_t b = 0; b < b_keys.size(); ++b) {
        const bool has_moved = std::binary_search(moved.begin(), moved.end(), b);
        if (all.a_of_b[b] != no_item && !has_moved)
            add_lonely_before(all.a_of_b[b]);
        result.push_back({all.a_of_b[b], b, has_moved});
    }
    add_lonely_before(static_cast<uint32_t>(a_keys.size()));
    return result;
}
