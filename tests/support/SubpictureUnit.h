/// Subpicture units as hexadecimal recipes: control sequences, their commands, and the links between them.
#pragma once

#include <stddef.h>
#include <stdio.h>

#include <string>
#include <string_view>
#include <vector>

namespace test {

/// "1E F0" as bytes; blanks do not count.
inline std::string hex(std::string_view text) {
    std::string out;
    int high = -1;
    for (const char c : text) {
        if (c == ' ') continue;
        const int digit = c <= '9' ? c - '0' : (c | 32) - 'a' + 10;
        if (high >= 0) out.push_back(static_cast<char>(high << 4 | digit));
        high = high >= 0 ? -1 : digit;
    }
    return out;
}

inline std::string be16(unsigned value) { return {static_cast<char>(value >> 8), static_cast<char>(value)}; }

/// One control sequence: its commands, and where it leads.
struct Sequence {
    std::string commands;
    int next;  // kSelf, kZero, or the index of a sequence
};
constexpr int kSelf = -1;
constexpr int kZero = -2;

/// A unit: size, offset of the control sequences, data, sequences.
inline std::string unitOf(const std::string& data, const std::vector<Sequence>& sequences) {
    const size_t control = 4 + data.size();
    std::vector<size_t> at;
    size_t end = control;
    for (const Sequence& sequence : sequences) {
        at.push_back(end);
        end += 4 + hex(sequence.commands).size();
    }
    std::string unit = be16(static_cast<unsigned>(end)) + be16(static_cast<unsigned>(control)) + data;
    for (size_t i = 0; i < sequences.size(); ++i) {
        const int next = sequences[i].next;
        unit += be16(0);
        unit += be16(next == kZero ? 0 : static_cast<unsigned>(at[next == kSelf ? i : static_cast<size_t>(next)]));
        unit += hex(sequences[i].commands);
    }
    return unit;
}

/// A unit of one control sequence, the last.
inline std::string unitOf(const std::string& data, const std::string& commands) {
    return unitOf(data, {{commands, kSelf}});
}

/// The command that names the display area: its first and last columns and lines.
inline std::string area(unsigned left, unsigned right, unsigned top, unsigned bottom) {
    char text[32];
    snprintf(text, sizeof text, "05 %03x%03x %03x%03x ", left, right, top, bottom);
    return text;
}

/// The command that tells where the two fields begin.
inline std::string offsets(unsigned top, unsigned bottom) {
    char text[32];
    snprintf(text, sizeof text, "06 %04x %04x ", top, bottom);
    return text;
}

}  // namespace test
