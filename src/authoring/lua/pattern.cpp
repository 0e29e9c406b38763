#include "authoring/lua/pattern.h"

#include <cstring>

static constexpr int max_depth = 200; // of items that wait for those behind them
static constexpr uint64_t trials_told = 1000;

static size_t match_rest(pattern_match& m, size_t s, size_t p, int depth);

static size_t fail_pattern(pattern_match& m, const char* fault)
{
    if (m.fault == nullptr) {
        m.fault = fault;
    }
    return no_match;
}

static void count_trial(pattern_match& m)
{
    if (++m.trials % trials_told == 0 && m.tried != nullptr) {
        m.tried(m.user, trials_told);
    }
}

static bool is_between(unsigned char c, char first, char last)
{
    return c >= static_cast<unsigned char>(first) && c <= static_cast<unsigned char>(last);
}

static bool is_letter(unsigned char c)
{
    return is_between(c, 'a', 'z') || is_between(c, 'A', 'Z');
}

static bool is_hex_digit(unsigned char c)
{
    return is_between(c, '0', '9') || is_between(c, 'a', 'f') || is_between(c, 'A', 'F');
}

// Of "%a": whether the letter is a class, and whether c is in it.
static bool find_class(unsigned char c, unsigned char lower_letter, bool& is_in)
{
    switch (lower_letter) {
    case 'a':
        is_in = is_letter(c);
        return true;
    case 'c':
        is_in = c < 32 || c == 127;
        return true;
    case 'd':
        is_in = is_between(c, '0', '9');
        return true;
    case 'g':
        is_in = c > 32 && c < 127;
        return true;
    case 'l':
        is_in = is_between(c, 'a', 'z');
        return true;
    case 'p':
        is_in = c > 32 && c < 127 && !is_letter(c) && !is_between(c, '0', '9');
        return true;
    case 's':
        is_in = c == ' ' || is_between(c, '\t', '\r');
        return true;
    case 'u':
        is_in = is_between(c, 'A', 'Z');
        return true;
    case 'w':
        is_in = is_letter(c) || is_between(c, '0', '9');
        return true;
    case 'x':
        is_in = is_hex_digit(c);
        return true;
    case 'z': // of older programs
        is_in = c == 0;
        return true;
    }
    return false;
}

// Whether c is what "%letter" stands for.
static bool matches_escape(unsigned char c, unsigned char letter)
{
    const bool upper = is_between(letter, 'A', 'Z');
    bool is_in = false;
    if (find_class(c, upper ? static_cast<unsigned char>(letter + ('a' - 'A')) : letter, is_in)) {
        return is_in != upper;
    }
    return c == letter;
}

// The end of the single-character item that begins at p; no_match with a fault when it has none.
static size_t item_end(pattern_match& m, size_t p)
{
    const std::string_view pattern = m.pattern;
    const char first = pattern[p++];
    if (first == '%') {
        return p < pattern.size() ? p + 1 : fail_pattern(m, "it ends with \"%\"");
    }
    if (first != '[') {
        return p;
    }
    if (p < pattern.size() && pattern[p] == '^') {
        ++p;
    }
    do { // a "]" that stands first is one of the set
        if (p >= pattern.size()) {
            return fail_pattern(m, "a \"]\" is missing");
        }
        p += pattern[p] == '%' ? size_t{2} : size_t{1};
    } while (p >= pattern.size() || pattern[p] != ']');
    return p + 1;
}

// Whether c is in the set from `p`, its "[", to `last`, its "]".
static bool matches_set(std::string_view pattern, unsigned char c, size_t p, size_t last)
{
    bool found = true;
    if (pattern[p + 1] == '^') {
        found = false;
        ++p;
    }
    while (++p < last) {
        if (pattern[p] == '%') {
            ++p;
            if (matches_escape(c, static_cast<unsigned char>(pattern[p]))) {
                return found;
            }
        } else if (pattern[p + 1] == '-' && p + 2 < last) {
            if (is_between(c, pattern[p], pattern[p + 2])) {
                return found;
            }
            p += 2;
        } else if (static_cast<unsigned char>(pattern[p]) == c) {
            return found;
        }
    }
    return !found;
}

// Whether the character at s is what the item p..end stands for.
static bool matches_one(pattern_match& m, size_t s, size_t p, size_t end)
{
    count_trial(m);
    if (s >= m.subject.size()) {
        return false;
    }
    const unsigned char c = static_cast<unsigned char>(m.subject[s]);
    switch (m.pattern[p]) {
    case '.':
        return true;
    case '%':
        return matches_escape(c, static_cast<unsigned char>(m.pattern[p + 1]));
    case '[':
        return matches_set(m.pattern, c, p, end - 1);
    }
    return static_cast<unsigned char>(m.pattern[p]) == c;
}

// "%bxy": from an x to the y that closes it.
static size_t match_balance(pattern_match& m, size_t s, size_t p)
{
    if (p + 1 >= m.pattern.size()) {
        return fail_pattern(m, "\"%b\" lacks its two characters");
    }
    if (s >= m.subject.size() || m.subject[s] != m.pattern[p]) {
        return no_match;
    }
    size_t open = 1;
    while (++s < m.subject.size()) {
        count_trial(m);
        if (m.subject[s] == m.pattern[p + 1]) {
            if (--open == 0) {
                return s + 1;
            }
        } else if (m.subject[s] == m.pattern[p]) {
            ++open;
        }
    }
    return no_match;
}

// As often as possible, then less often until the rest matches.
static size_t match_most(pattern_match& m, size_t s, size_t p, size_t end, int depth)
{
    size_t count = 0;
    while (matches_one(m, s + count, p, end)) {
        ++count;
    }
    for (;; --count) {
        const size_t found = match_rest(m, s + count, end + 1, depth);
        if (found != no_match || count == 0 || m.fault != nullptr) {
            return found;
        }
    }
}

// As seldom as possible, then more often until the rest matches.
static size_t match_least(pattern_match& m, size_t s, size_t p, size_t end, int depth)
{
    for (;; ++s) {
        const size_t found = match_rest(m, s, end + 1, depth);
        if (found != no_match || m.fault != nullptr || !matches_one(m, s, p, end)) {
            return found;
        }
    }
}

static size_t begin_capture(pattern_match& m, size_t s, size_t p, size_t length, int depth)
{
    if (m.capture_count >= max_captures) {
        return fail_pattern(m, "it has more than 32 captures");
    }
    m.captures[m.capture_count++] = {s, length};
    const size_t found = match_rest(m, s, p, depth);
    if (found == no_match) {
        --m.capture_count;
    }
    return found;
}

static size_t end_capture(pattern_match& m, size_t s, size_t p, int depth)
{
    size_t i = m.capture_count;
    while (i > 0 && m.captures[i - 1].length != open_capture) {
        --i;
    }
    if (i == 0) {
        return fail_pattern(m, "a \")\" closes nothing");
    }
    m.captures[i - 1].length = s - m.captures[i - 1].begin;
    const size_t found = match_rest(m, s, p, depth);
    if (found == no_match) {
        m.captures[i - 1].length = open_capture;
    }
    return found;
}

// "%1": the text of a capture once more.
static size_t match_again(pattern_match& m, size_t s, char digit)
{
    const size_t i = static_cast<size_t>(digit - '1');
    if (digit == '0' || i >= m.capture_count || m.captures[i].length == open_capture) {
        return fail_pattern(m, "it names a capture that is not there yet");
    }
    const pattern_capture& c = m.captures[i];
    if (c.length == position_capture) {
        return no_match; // no text is like a position
    }
    for (size_t n = 0; n < c.length / 64 + 1; ++n) {
        count_trial(m);
    }
    const bool same = c.length <= m.subject.size() - s
        && std::memcmp(m.subject.data() + c.begin, m.subject.data() + s, c.length) == 0;
    return same ? s + c.length : no_match;
}

// "%f[set]": between a character that is not in the set and one that is.
static bool matches_frontier(pattern_match& m, size_t s, size_t p, size_t end)
{
    const unsigned char before = s == 0 ? 0 : static_cast<unsigned char>(m.subject[s - 1]);
    const unsigned char after = s < m.subject.size() ? static_cast<unsigned char>(m.subject[s]) : 0;
    count_trial(m);
    return !matches_set(m.pattern, before, p, end - 1) && matches_set(m.pattern, after, p, end - 1);
}

// The items that begin with "%" and are no single character: moves s and p behind, or s to no_match. False: it is none.
static bool match_special(pattern_match& m, size_t& s, size_t& p)
{
    const char letter = p + 1 < m.pattern.size() ? m.pattern[p + 1] : '\0';
    if (letter == 'b') {
        s = match_balance(m, s, p + 2);
        p += 4;
        return true;
    }
    if (letter == 'f') {
        p += 2;
        if (p >= m.pattern.size() || m.pattern[p] != '[') {
            s = fail_pattern(m, "\"%f\" lacks its set");
            return true;
        }
        const size_t end = item_end(m, p);
        s = end != no_match && matches_frontier(m, s, p, end) ? s : no_match;
        p = end;
        return true;
    }
    if (letter >= '0' && letter <= '9') {
        s = match_again(m, s, letter);
        p += 2;
        return true;
    }
    return false;
}

// Matches the pattern from p on at s: where the match ends.
static size_t match_rest(pattern_match& m, size_t s, size_t p, int depth)
{
    if (++depth > max_depth) {
        return fail_pattern(m, "it is too long");
    }
    while (p < m.pattern.size() && s != no_match) {
        const char c = m.pattern[p];
        if (c == '(') {
            const bool is_position = p + 1 < m.pattern.size() && m.pattern[p + 1] == ')';
            return begin_capture(m, s, p + (is_position ? 2 : 1), is_position ? position_capture : open_capture, depth);
        }
        if (c == ')') {
            return end_capture(m, s, p + 1, depth);
        }
        if (c == '$' && p + 1 == m.pattern.size()) {
            return s == m.subject.size() ? s : no_match;
        }
        if (c == '%' && match_special(m, s, p)) {
            continue;
        }
        const size_t end = item_end(m, p);
        if (end == no_match) {
            return no_match;
        }
        const char suffix = end < m.pattern.size() ? m.pattern[end] : '\0';
        if (suffix == '*') {
            return match_most(m, s, p, end, depth);
        }
        if (suffix == '+') {
            return matches_one(m, s, p, end) ? match_most(m, s + 1, p, end, depth) : no_match;
        }
        if (suffix == '-') {
            return match_least(m, s, p, end, depth);
        }
        const bool one = matches_one(m, s, p, end);
        if (suffix == '?') {
            const size_t with = one ? match_rest(m, s + 1, end + 1, depth) : no_match;
            if (with != no_match || m.fault != nullptr) {
                return with;
            }
            p = end + 1;
        } else {
            s = one ? s + 1 : no_match;
            p = end;
        }
    }
    return s;
}

size_t match_pattern(pattern_match& m, size_t begin)
{
    m.capture_count = 0;
    count_trial(m);
    const size_t end = match_rest(m, begin, 0, 0);
    return m.fault == nullptr ? end : no_match;
}
