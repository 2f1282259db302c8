#include "tests/reference/Films.h"

#include <stdio.h>

#include <algorithm>

#include "tests/support/SubpictureUnit.h"
#include "tools/samples/VobSubMaker.h"

namespace reference {

namespace {

using Pieces = std::vector<std::string>;
using namespace std::literals;

// ------------------------------------------------------------------------------------------------------ pieces

const Pieces kWords = {"Hello", "World",     "a",       "A line of several words",
                       "1",     "12",        "0",       "12:30 o'clock",
                       "{x",    "one\\Ntwo", "one|two", "&nbsp;",
                       " ",     "I <3 you"};
const Pieces kMarkup = {"<i>",  "</i>",   "<b><i>", "<3", "< ",     "<",      ">",    "{y:i}", "{\\an8}", "{",   "}",
                        "{/x}", "{x}<i>", "{x}<",   "|",  "&nbsp;", "&nbsp",  "<br>", "<BR>",  "<br/>",   "<a>", "{1}",
                        "[br]", "<i>{y}", "{y}{z}", "[",  "]",      "{a}{<}", ".",    ":",     ",",       "/"};
const Pieces kEnds = {"\r\n", "\n", "\r", "\r\n\r\n", "\n\n", "\n\r", "\r\n \r\n", "\r\r\n", "<i>\r\n\r\n", "{y}\r\n"};
const Pieces kBytes = {"\0"s,      "\x85", "\xA4\x40",     "\xFE\x45", "\x81\x40",
                       "\xB0\xA1", "\xE9", "\xE4\xB8\xAD", "\t",       "\v"};

std::string number(const char* format, unsigned value) {
    char text[24];
    snprintf(text, sizeof text, format, value);
    return text;
}

class Writer {
public:
    explicit Writer(Random& random)
        : r(random), mEnd(r.of<std::string>({"\r\n", "\r\n", "\r\n", "\n", "\n", "\r", ""})) {
        mTidy = r.percent(40);
    }

    /// A line end; of files that mix them, any.
    std::string end() { return mEnd.empty() ? r.of<std::string>({"\r\n", "\n", "\r", "\n\r"}) : mEnd; }
    bool odd(unsigned percent) { return !mTidy && r.percent(percent); }

    std::string text(unsigned most = 5) {
        std::string out;
        for (unsigned n = 1 + r.below(most); n > 0; --n) {
            out += r.of(odd(45) ? kMarkup : kWords);
            if (odd(6)) out += r.of(kEnds);
            if (odd(4)) out += r.of(kBytes);
        }
        return out;
    }
    /// One to three lines.
    std::string lines(const std::string& lineEnd) {
        std::string out = text();
        while (r.percent(30)) out += lineEnd + text();
        return out;
    }
    unsigned step() {
        mNow += odd(4) ? 0 - r.below(3000) : 500 + r.below(4000);
        return mNow;
    }
    /// The digits of a number, some in another width.
    std::string digits(unsigned value, unsigned width) {
        if (odd(5)) width = 1 + r.below(4);
        return number(width == 1 ? "%u" : width == 2 ? "%02u" : width == 3 ? "%03u" : "%04u", value);
    }
    std::string between(const char* mark) {
        if (odd(2)) return r.of<std::string>({".", ",", ":", " ", "-", "", ";", "\n", " :"});
        return mark;
    }
    /// h:m:s
    std::string clock(unsigned ms, unsigned hourWidth = 2) {
        std::string out = digits(ms / 3600000, hourWidth) + between(":");
        out += digits(ms / 60000 % 60, 2) + between(":");
        return out + digits(ms / 1000 % 60, 2);
    }
    std::string clock(unsigned ms, const char* mark, unsigned width, unsigned hourWidth = 2) {
        const unsigned fraction = width == 2 ? ms / 10 % 100 : ms % 1000;
        const std::string seconds = clock(ms, hourWidth);
        return seconds + between(mark) + digits(fraction, width);
    }
    unsigned entries() { return 1 + r.below(5); }

    Random& r;

private:
    std::string mEnd;
    bool mTidy;
    unsigned mNow = 0;
};

// ---------------------------------------------------------------------------------------------------- damage

size_t lineStart(const std::string& text, size_t at) {
    const size_t end = text.find_last_of("\r\n", at);
    return end == std::string::npos ? 0 : end + 1;
}
std::string lineAt(const std::string& text, size_t at) {
    const size_t from = lineStart(text, at);
    const size_t to = text.find('\n', from);
    return text.substr(from, to == std::string::npos ? to : to + 1 - from);
}

/// Characters lost, doubled, put in; lines that change places.
void disorder(Random& r, std::string& text, const Pieces& own) {
    if (r.percent(45)) return;
    for (unsigned n = 1 + r.below(4); n > 0; --n) {
        const size_t at = r.below(text.size() + 1);
        switch (r.below(9)) {
            case 0:
                text.erase(at, 1);
                break;
            case 1:
                text.erase(at, r.below(20));
                break;
            case 2:
                text.insert(at, text.substr(r.below(text.size() + 1), r.below(30)));
                break;
            case 3:
                text.insert(at, r.of(kMarkup));
                break;
            case 4:
                text.insert(at, r.of(kEnds));
                break;
            case 5:
                text.insert(at, r.of(own));
                break;
            case 6:
                text.insert(lineStart(text, at), r.of(own));
                break;
            case 7:
                text.insert(lineStart(text, at), lineAt(text, r.below(text.size() + 1)));
                break;
            default:
                text.insert(at, r.of(kBytes));
                break;
        }
    }
}

std::string widened(const std::string& text, bool big, bool mark) {
    std::string out = !mark ? "" : big ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : text) {
        if (big) out += '\0';
        out += c;
        if (!big) out += '\0';
    }
    return out;
}

std::string encoded(Random& r, const std::string& text) {
    const unsigned kind = r.below(100);
    if (kind < 35) return text;
    if (kind < 48) return "\xEF\xBB\xBF" + text;
    if (kind < 50) return "\xEF\xBB\xBF\r\n" + text;
    return widened(text, kind >= 76, kind != 98 && kind != 99);
}

/// Bytes lost, changed and put in, and ends cut off.
void damage(Random& r, std::string& data) {
    if (r.percent(12) && !data.empty()) data.pop_back();
    if (r.percent(8)) {  // nothing behind the first byte of a character that means something
        const size_t at = data.find_first_of("}]>:\r\n", r.below(data.size() + 1));
        if (at < data.size()) data.resize(at + 1);
    }
    if (r.percent(60)) return;
    for (unsigned n = 1 + r.below(3); n > 0 && !data.empty(); --n) {
        const size_t at = r.below(data.size());
        switch (r.below(7)) {
            case 0:
                data[at] = static_cast<char>(data[at] ^ 1 << r.below(8));
                break;
            case 1:
                data[at] = static_cast<char>(r.below(256));
                break;
            case 2:
                data[at] = "\0\r\n <>{}[]:,0"[r.below(13)];
                break;
            case 3:
                data.erase(at, 1);
                break;
            case 4:
                data.insert(at, 1, "\0\r\n <>{}[]:,0"[r.below(13)]);
                break;
            case 5:
                data.erase(at, 1 + r.below(6));
                break;
            default:
                data.resize(r.percent(50) ? at : data.size() - 1 - r.below(std::min<size_t>(data.size(), 8)));
                break;
        }
    }
}

std::string finished(Random& r, std::string text, const Pieces& own) {
    if (r.percent(6)) text.insert(0, r.of(kEnds));
    if (r.percent(12)) {  // the end of the last lines is missing
        while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.pop_back();
    }
    disorder(r, text, own);
    std::string data = encoded(r, text);
    damage(r, data);
    return data;
}

}  // namespace

// --------------------------------------------------------------------------------------------------- formats

std::string makeSrt(Random& random) {
    Writer w(random);
    std::string file;
    const unsigned count = w.entries();
    for (unsigned i = 1; i <= count; ++i) {
        if (!w.odd(8)) file += number("%u", i) + w.end();
        const unsigned start = w.step();
        const char* const mark = w.odd(10) ? "." : ",";
        file += w.clock(start, mark, 3) + " --> " + w.clock(start + 1000 + random.below(2000), mark, 3);
        if (w.odd(4)) file += random.of<std::string>({" ", " X1:10", "\t", " --> "});
        const std::string end = w.end();
        file += end;
        if (w.odd(5)) file += end;
        if (!w.odd(5)) file += w.lines(end) + end;
        if (!w.odd(7)) file += w.odd(5) ? " " + end : end;
    }
    return finished(random, file,
                    {"1\r\n", "00:00:01,000 --> 00:00:02,000", "0:0:1,5 --> 0:0:2,75\r\n", "00:00:01", "--> ",
                     "20h30, 21h00.", "\r\n00:00:07,000 --> 00:00:09,000\r\n\r\n"});
}

std::string makeSsa(Random& random) {
    Writer w(random);
    std::string file;
    if (!w.odd(30)) file += "[Script Info]" + w.end() + "Title: x" + w.end() + w.end() + "[Events]" + w.end();
    if (!w.odd(30)) file += "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text" + w.end();
    const unsigned count = w.entries();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned start = w.step();
        if (w.odd(3)) file += " ";
        file += random.of<std::string>({"Dialogue: ", "Dialogue: ", "dialogue: ", "DIALOGUE:", "Comment: "});
        file += number("%u", random.below(3)) + ",";
        file += w.clock(start, ".", 2, 1) + "," + w.clock(start + 2000, ".", 2, 1) + ",";
        file +=
            random.of<std::string>({"Default,,0,0,0,,", "Default,Name,0000,0000,0000,Effect,", "D,,0,0,0,,", ",,,,,,"});
        if (w.odd(4)) file.erase(file.find_last_of(','), 1);
        file += w.text();
        if (w.odd(25)) file += random.of<std::string>({"{\\i1}", "{\\p1}m 0 0{\\p0}", "<i>", "{x}<i>"});
        if (i + 1 < count || !w.odd(30)) file += w.end();
    }
    return finished(random, file,
                    {"Dialogue: ", ",", ",,", "0:00:01.50", "Dialogue: 0,0:00:01.50,0:00:03.00,D,,0,0,0,,x",
                     "[Events]\r\n", "\xA4\x40", "\xFE\x45", "\x81\x40"});
}

std::string makeSmi(Random& random) {
    Writer w(random);
    std::string file;
    if (!w.odd(30)) file += "<SAMI>" + w.end() + "<BODY>" + w.end();
    const unsigned count = w.entries();
    for (unsigned i = 0; i < count; ++i) {
        if (w.odd(5)) file += random.of<std::string>({" ", "\t", "<BODY>"});
        file +=
            random.of<std::string>({"<SYNC Start=", "<SYNC Start=", "<sync start=", "<SYNC START=", "<Sync Start=\""});
        file += number(w.odd(3) ? "-%u" : "%u", w.step());
        if (w.odd(3)) file += "\"";
        file += ">";
        if (w.odd(10)) file += w.end();
        if (!w.odd(8)) file += "<P Class=ENCC>";
        if (w.odd(20)) file += w.end();
        file += random.percent(15) ? "&nbsp;" : w.lines(random.percent(50) ? "<br>" + w.end() : w.end());
        if (w.odd(15)) file += random.of<std::string>({"</P>", "<br>", "<b>&nbsp;", "</SYNC>"});
        file += w.end();
    }
    if (!w.odd(30)) file += "</BODY></SAMI>" + w.end();
    return finished(random, file,
                    {"<SYNC Start=1000>", "<SYNC", "<P Class=ENCC>", "<br>", "&nbsp;", "<br>\r\n", "\r\n<SYNC",
                     "<SYNC  Start=1000>", "<SYNC Start =5>", "=", "<b>{c}"});
}

std::string makeTxt(Random& random) {
    Writer w(random);
    std::string file;
    const unsigned form = random.below(4);
    const unsigned count = 1 + random.below(4);
    for (unsigned i = 0; i < count; ++i) {
        for (const bool closes : {false, true}) {
            const unsigned now = w.step();
            if (closes && w.odd(8)) continue;
            unsigned used = w.odd(5) ? random.below(4) : form;
            if (used >= 2) {
                file += w.clock(now, used == 2 ? 1 : 2) + ":" + (closes ? "" : w.text()) + w.end();
                continue;
            }
            for (unsigned line = 1; line <= 2; ++line) {
                if (line == 2 && w.odd(5)) continue;
                file += w.clock(now) + (used == 0 ? number(",%u=", line) : number(".%u:", line));
                file += (closes ? "" : w.text()) + w.end();
            }
        }
    }
    return finished(random, file,
                    {"00:00:01,1=", "00:00:01,2=x\r\n", "0:00:01:", "00:00:01:5 apples\r\n", "|", "0:00:01.5:t\r\n",
                     "00:00:01,500 --> 00:00:03,000\r\n", "00:00:02.1:", "{x}\r\n"});
}

std::string makeSubViewer20(Random& random) {
    Writer w(random);
    std::string file;
    if (random.percent(40)) file += "[INFORMATION]" + w.end() + "[TITLE]x" + w.end();
    const unsigned count = w.entries();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned start = w.step();
        file += w.clock(start, ".", 2) + w.between(",") + w.clock(start + 1500, ".", 2);
        if (w.odd(4)) file += " ";
        file += w.end() + (w.odd(5) ? "" : w.lines(w.end())) + w.end();
        if (!w.odd(20)) file += w.end();
    }
    return finished(random, file,
                    {"00:00:01.00,00:00:04.50", "0:0:1.0,0:0:4.5\r\nshort\r\n", "[x]\r\n", "{1}{25}Hello\r\n",
                     "[00:00:01]\r\n", "12 monkeys\r\n", "a1\r\n"});
}

std::string makeSubViewer10(Random& random) {
    Writer w(random);
    const std::string opening = random.percent(75) ? "[" : "{";
    std::string file;
    if (w.odd(20)) file += "[TITLE]" + w.end();
    const unsigned count = w.entries();
    for (unsigned i = 0; i < count; ++i) {
        file += opening + w.clock(w.step()) + "]";
        if (w.odd(4)) file += "behind";
        file += w.end() + w.text() + w.end();
        if (!w.odd(6)) file += opening + w.clock(w.step()) + "]" + (i + 1 == count && w.odd(30) ? "" : w.end());
        if (random.percent(40)) file += w.end();
    }
    return finished(random, file,
                    {"[00:00:01]", "{00:00:01]\r\n", "[0:0:1]\r\n", "[1:2:3]", "x1\r\n", "[", "[00:00:01]text\r\n"});
}

std::string makeMicroDvd(Random& random) {
    Writer w(random);
    std::string file;
    if (random.percent(30)) {
        file += "{1}{1}" +
                random.of<std::string>({"23.976", "25.0", "25", "29.97", "23.05", "0.0", "30.000", "1.0000000001"});
        file += w.end();
    }
    if (w.odd(6)) file += "title" + w.end();
    if (w.odd(15)) file += random.of<std::string>({"\xE9" + w.end(), w.end(), " ", "xyz"});
    const unsigned count = w.entries();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned frame = w.step() / 40;
        file += "{" + w.digits(frame, 1) + "}" + w.between("{") + w.digits(frame + 50, 1) + "}";
        if (w.odd(8)) file += random.of<std::string>({"{y:i}", "{1}{2}", "{", "12.5"});
        if (w.odd(2)) file += std::string(random.below(600), '1');
        const bool last = i + 1 == count;
        const bool empty = last ? random.percent(35) : w.odd(6);
        if (!empty) file += w.text();
        if (!last || !random.percent(empty ? 60 : 20)) file += w.end();
    }
    return finished(random, file,
                    {"{1}{1}23.976\r\n", "{100}{150}", "{0}{0}", "{5", "}", "{1}{2}", "a1\r\n", "{}{}", "{12}{", "|"});
}

std::string makeDvb(Random& random) {
    Writer w(random);
    std::string file;
    const unsigned form = random.below(3);
    if (w.odd(15)) file += "title" + w.end();
    const unsigned count = w.entries();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned start = w.step();
        const unsigned stop = start + 1500;
        if (form != 2) {
            file += w.clock(start, ":", 2, form == 0 ? 2 : 1) + " " + w.clock(stop, ":", 2) + " ";
            if (w.odd(30)) file += "  ";
        } else {
            file += random.of<std::string>({"12 ", "1234 ", "0 ", "123 "}) + w.clock(start, ",", 3) + " ";
            file += w.clock(stop, ",", 3) + " ";
        }
        if (!w.odd(6)) file += w.lines(w.end());
        if (i + 1 < count || !w.odd(30)) file += w.end();
    }
    return finished(random, file,
                    {"00:00:01:00 00:00:04:00 x", "12 00:00:01,500 00:00:04,000 x\r\n", "0:00:01:00 0:00:04:00\r\n",
                     "12:30:45:00", "a1\r\n", "11:22:33:44", "<i>\r\n\r\n"});
}

std::string makeSub(Random& random) {
    return random.of<std::string (*)(Random&)>({makeSubViewer20, makeSubViewer10, makeMicroDvd, makeDvb})(random);
}

std::string makeIndex(Random& random) {
    Writer w(random);
    std::string file;
    if (!w.odd(20)) file += "# VobSub index file, v7" + w.end();
    if (w.odd(20)) file += w.end();
    const auto value = [&](const char* text) { return (w.odd(6) ? "" : " "s) + (w.odd(3) ? " " : "") + text; };
    const unsigned lines = 3 + random.below(14);
    for (unsigned i = 0; i < lines; ++i) {
        switch (random.below(14)) {
            case 0:
                file +=
                    "size:" + value(random.of<std::string>({"720x576", "720 x 576", "1920x1080", "x", "720x"}).c_str());
                break;
            case 1:
                file += "org:" + value(random.of<std::string>({"8, 16", "0,0", "8,16", "8", ""}).c_str());
                break;
            case 2: {
                file += "palette:";
                const unsigned count = w.odd(25) ? random.below(20) : 16;
                for (unsigned k = 0; k < count; ++k)
                    file += (k > 0 ? "," : "") + value(number("%06x", random.next() >> 8).c_str());
                break;
            }
            case 3:
                file +=
                    "delay:" + value(random
                                         .of<std::string>({"+00:00:01:500", "-00:00:01:500", "00:00:01:500", "-1:2:3:4",
                                                           "+99:99:99:999", "-4294967295:0:0:1", "+1:2", "-"})
                                         .c_str());
                break;
            case 4:
            case 5:
                file +=
                    "id:" + value(random.of<std::string>({"en", "ge", "de", "fr", "iw", "x", "na", "bg", ""}).c_str()) +
                    ", index: " + number("%u", random.below(4));
                break;
            case 6:
                file += random.of<std::string>(
                    {"langidx: 0", "custom colors: OFF, tridx: 0000", "alt: x", "forced subs: OFF", "#x", ""});
                break;
            default: {
                const std::string clock = w.clock(w.step(), ":", 3);
                file += "timestamp:" + value(clock.c_str()) + "," + value("filepos:") +
                        value(number(w.odd(5) ? "%x" : "%09x", random.below(0x100000)).c_str());
            }
        }
        if (w.odd(3)) file += " ";
        file += w.end();
        if (w.odd(8)) file += w.end();
    }
    return finished(random, file,
                    {"timestamp: 00:00:01:500, filepos: 000001800\r\n", "id: en\r\n",
                     "filepos:", "timestamp:", "delay: ", "size: 1x2\r\n", "org: ", "palette: 1, 2", "\r\n\r\n",
                     "# \r\n", "langidx:", "custom colors:\r\n"});
}

std::string makeUnit(Random& random) {
    std::string unit;
    if (random.percent(50)) {  // as they are made
        samples::Subpicture picture;
        picture.bitmap = samples::Bitmap(2 + 2 * random.below(20), 2 + 2 * random.below(8));
        unsigned run = 0, code = 0;
        for (uint8_t& pixel : picture.bitmap.codes) {
            if (run-- == 0) {
                run = random.below(random.percent(20) ? 200 : 8);
                code = random.below(4);
            }
            pixel = static_cast<uint8_t>(code);
        }
        for (unsigned k = 0; k < 4; ++k) {
            picture.colours[k] = static_cast<uint8_t>(random.below(16));
            picture.contrast[k] = static_cast<uint8_t>(random.below(3) * 7);
        }
        picture.left = random.below(700);
        picture.top = random.below(500);
        picture.shownMs = random.percent(50) ? 2000 : 0;
        picture.spareLines = random.below(4);
        unit = samples::encodeUnit(picture);
    } else {  // of any runs and commands
        std::string data;
        const unsigned size = random.below(120);
        for (unsigned i = 0; i < size; ++i) {
            data += static_cast<char>(random.percent(30) ? random.of<int>({0, 0x4F, 0x1E, 3, 0x10, 0x40})
                                                         : random.below(256));
        }
        const unsigned left = random.below(20), top = random.below(20);
        std::vector<test::Sequence> sequences;
        const unsigned count = 1 + random.below(3);
        for (unsigned i = 0; i < count; ++i) {
            std::string commands;
            if (random.percent(80)) {
                commands += test::area(left, left + random.below(60), top, top + random.below(24) - random.percent(3));
            }
            if (random.percent(80)) commands += test::offsets(4 + random.below(10), 4 + random.below(size + 8));
            if (random.percent(60)) commands += "03 " + number("%04x ", random.below(0x10000));
            if (random.percent(60)) commands += "04 " + number("%04x ", random.below(0x10000));
            for (unsigned n = random.below(4); n > 0; --n) commands += random.of<std::string>({"00 ", "01 ", "02 "});
            if (random.percent(3)) {
                for (unsigned n = 26 + random.below(8); n > 0; --n) commands += "01 ";
            }
            commands += random.percent(90) ? "FF " : random.of<std::string>({"07 ", "08 ", "FE ", "00 "});
            const bool last = i + 1 == count;
            const int next =
                last ? (random.percent(92) ? test::kSelf : test::kZero)
                     : (random.percent(92) ? static_cast<int>(i) + 1 : static_cast<int>(random.below(count)));
            sequences.push_back({commands, next});
        }
        unit = test::unitOf(data, sequences);
    }
    if (random.percent(50)) damage(random, unit);
    return unit;
}

}  // namespace reference
