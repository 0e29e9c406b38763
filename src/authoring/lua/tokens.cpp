#include "authoring/lua/tokens.h"

#include <charconv>
#include <cstring>
#include <limits>

// ---- characters: those of the C locale ----------------------------------------------------------

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

static bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

static bool is_hex_digit(char c)
{
    return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

static bool is_line_end(char c)
{
    return c == '\n' || c == '\r';
}

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\v' || c == '\f' || is_line_end(c);
}

static char char_at(const token_reader& r, size_t offset = 0)
{
    return r.at + offset < r.text.size() ? r.text[r.at + offset] : '\0';
}

static bool is_over(const token_reader& r)
{
    return r.at >= r.text.size();
}

// Past a character; two different ones of line ends are one line's end, whichever comes first.
static void step(token_reader& r)
{
    const char c = r.text[r.at++];
    if (!is_line_end(c))
        return;
    if (!is_over(r) && is_line_end(r.text[r.at]) && r.text[r.at] != c)
        ++r.at;
    ++r.line;
}

// ---- what is longer than a sign -------------------------------------------------------------------

// How many "=" stand in the long bracket that begins here; -1: none does.
static int long_bracket_level(const token_reader& r)
{
    if (char_at(r) != '[')
        return -1;
    size_t length = 1;
    while (char_at(r, length) == '=')
        ++length;
    return char_at(r, length) == '[' ? static_cast<int>(length - 1) : -1;
}

static void skip_long_bracket(token_reader& r, int level)
{
    const size_t equals = static_cast<size_t>(level);
    r.at += equals + 2;
    for (; !is_over(r); step(r)) {
        if (char_at(r) != ']')
            continue;
        size_t length = 1;
        while (length <= equals && char_at(r, length) == '=')
            ++length;
        if (length == equals + 1 && char_at(r, length) == ']') {
            r.at += equals + 2;
            return;
        }
    }
}

static void skip_comment(token_reader& r)
{
    r.at += 2;
    const int level = long_bracket_level(r);
    if (level >= 0)
        return skip_long_bracket(r, level);
    while (!is_over(r) && !is_line_end(char_at(r)))
        ++r.at;
}

static void skip_blanks_and_comments(token_reader& r)
{
    while (!is_over(r)) {
        if (is_blank(char_at(r)))
            step(r);
        else if (char_at(r) == '-' && char_at(r, 1) == '-')
            skip_comment(r);
        else
            return;
    }
}

static void skip_quoted(token_reader& r)
{
    const char quote = r.text[r.at++];
    while (!is_over(r) && !is_line_end(char_at(r))) {
        const char c = r.text[r.at];
        if (c == '\\' && char_at(r, 1) == 'z') { // and all blanks behind it
            for (r.at += 2; !is_over(r) && is_blank(char_at(r));)
                step(r);
            continue;
        }
        ++r.at;
        if (c == quote)
            return;
        if (c == '\\' && !is_over(r))
            step(r); // whatever it is; a line's end too
    }
}

// All that Lua takes for one number, right or wrong.
static void skip_number(token_reader& r)
{
    const bool is_hex = char_at(r) == '0' && (char_at(r, 1) == 'x' || char_at(r, 1) == 'X');
    const char* exponents = is_hex ? "pP" : "eE";
    r.at += is_hex ? 2u : 0u;
    while (!is_over(r)) {
        const char c = char_at(r);
        if (c == exponents[0] || c == exponents[1])
            r.at += char_at(r, 1) == '-' || char_at(r, 1) == '+' ? 2u : 1u;
        else if (is_hex_digit(c) || c == '.' || is_letter(c))
            ++r.at;
        else
            return;
    }
}

static void skip_sign(token_reader& r)
{
    for (const char* sign : {"...", "..", "==", "~=", "<=", ">=", "//", "::", "<<", ">>"}) {
        if (r.text.substr(r.at).starts_with(sign)) {
            r.at += std::strlen(sign);
            return;
        }
    }
    ++r.at;
}

// ---- tokens -----------------------------------------------------------------------------------------

token_reader read_tokens(std::string_view text)
{
    token_reader r = {text};
    if (text.starts_with("\xef\xbb\xbf"))
        r.at = 3;
    if (char_at(r) == '#')
        while (!is_over(r) && char_at(r) != '\n')
            ++r.at;
    return r;
}

source_token next_token(token_reader& r)
{
    skip_blanks_and_comments(r);
    source_token token;
    const size_t begin = r.at;
    const char c = char_at(r);
    if (is_over(r)) {
        token.kind = token_end;
    } else if (is_letter(c)) {
        token.kind = token_name;
        while (is_letter(char_at(r)) || is_digit(char_at(r)))
            ++r.at;
    } else if (is_digit(c) || (c == '.' && is_digit(char_at(r, 1)))) {
        token.kind = token_number;
        skip_number(r);
    } else if (c == '"' || c == '\'') {
        token.kind = token_text;
        skip_quoted(r);
    } else if (const int level = long_bracket_level(r); level >= 0) {
        token.kind = token_text;
        skip_long_bracket(r, level);
    } else {
        token.kind = token_sign;
        skip_sign(r);
    }
    token.line = r.line;
    token.text = r.text.substr(begin, r.at - begin);
    return token;
}

// ---- numbers ------------------------------------------------------------------------------------------

// Whole ones go round at 64 bits.
static number_token hex_number(std::string_view digits)
{
    if (digits.find_first_of(".pP") == std::string_view::npos) {
        uint64_t bits = 0;
        for (const char c : digits) {
            if (!is_hex_digit(c))
                return {};
            bits = bits * 16 + static_cast<uint64_t>(is_digit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
        }
        return {!digits.empty(), true, static_cast<double>(static_cast<int64_t>(bits))};
    }
    double value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::hex);
    return {read.ec == std::errc() && read.ptr == digits.data() + digits.size(), false, value};
}

number_token number_of_token(std::string_view text)
{
    if (text.starts_with("0x") || text.starts_with("0X"))
        return hex_number(text.substr(2));
    const char* end = text.data() + text.size();
    int64_t whole = 0;
    const auto as_whole = std::from_chars(text.data(), end, whole);
    if (as_whole.ec == std::errc() && as_whole.ptr == end && is_digit(text[0]))
        return {true, true, static_cast<double>(whole)};
    double value = 0;
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ptr != end || (!is_digit(text[0]) && text[0] != '.'))
        return {};
    if (read.ec == std::errc::result_out_of_range) // too large; too small a number is read as one of few digits
        return {true, false,
            text.find("e-") == std::string_view::npos && text.find("E-") == std::string_view::npos
                ? std::numeric_limits<double>::infinity()
                : 0};
    return {read.ec == std::errc(), false, value};
}
