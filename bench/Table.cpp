#include "bench/Table.h"

#include <malloc.h>
#include <math.h>
#include <stdlib.h>

namespace bench {

namespace {

struct Row {
    Group group;
    std::string title;
    std::function<std::vector<Measure>()> prepare;
};

std::vector<Row>& rows() {
    static std::vector<Row> all;
    return all;
}

Group& currentGroup() {
    static Group group;
    return group;
}

constexpr int kRounds = 5;
constexpr double kNotInstalled = -1;

/// Three figures, and no more behind the point than they need.
std::string shown(double value) {
    char text[32];
    snprintf(text, sizeof text, "%.*f", value < 9.995 ? 2 : value < 99.95 ? 1 : 0, value);
    return text;
}

/// The figures of each way, round by round; empty where there is no way.
std::vector<std::vector<double>> measure(const Row& row) {
    const std::vector<Measure> ways = row.prepare();
    std::vector<std::vector<double>> figures(1 + row.group.others.size());
    for (int round = 0; round < kRounds; ++round) {
        for (size_t way = 0; way < ways.size() && way < figures.size(); ++way) {
            if (ways[way]) figures[way].push_back(ways[way]());
        }
    }
    return figures;
}

/// How many times as long the library takes, the median over the rounds.
double ratio(const Group& group, const std::vector<double>& ours, const std::vector<double>& other) {
    std::vector<double> ratios;
    for (size_t i = 0; i < ours.size(); ++i) {
        ratios.push_back(group.better == Better::kLower ? ours[i] / other[i] : other[i] / ours[i]);
    }
    return median(ratios);
}

void printRow(FILE* out, const Row& row) {
    const auto figures = measure(row);
    std::vector<std::string> cells, ratios;
    for (size_t way = 0; way < figures.size(); ++way) {
        const bool measured = !figures[way].empty();
        const double figure = measured ? median(figures[way]) : 0;
        const bool missing = figure == kNotInstalled;
        cells.push_back(missing ? "not installed" : measured ? shown(figure) : "–");
        if (way == 0) continue;
        ratios.push_back(measured && !missing ? shown(ratio(row.group, figures[0], figures[way])) : "–");
    }
    cells.insert(cells.end(), ratios.begin(), ratios.end());
    fprintf(out, "| %s |", row.title.c_str());
    for (const std::string& cell : cells) fprintf(out, " %s |", cell.c_str());
    fprintf(out, "\n");
    fflush(out);
}

void printHead(FILE* out, const Group& group) {
    fprintf(out, "**%s, %s**\n\n| | ours |", group.title.c_str(), group.unit);
    for (const char* other : group.others) fprintf(out, " %s |", other);
    for (const char* other : group.others) fprintf(out, " ours : %s |", other);
    fprintf(out, "\n|---|");
    for (size_t i = 0; i < 1 + 2 * group.others.size(); ++i) fprintf(out, "---:|");
    fprintf(out, "\n");
}

}  // namespace

Measure notInstalled() {
    return [] { return kNotInstalled; };
}

Measure medianWallUs(std::function<void()> work) {
    return [work = std::move(work)] {
        constexpr size_t kCalls = 60;
        std::vector<double> samples(kCalls);
        for (double& sample : samples) {
            malloc_trim(0);
            sample = wallNs(work);
        }
        return median(samples) / 1e3;
    };
}

void begin(const Group& group) { currentGroup() = group; }

void add(const std::string& title, std::function<std::vector<Measure>()> prepare) {
    rows().push_back({currentGroup(), title, std::move(prepare)});
}

void run(FILE* out, const std::string& filter) {
    std::string group;
    for (const Row& row : rows()) {
        if ((row.group.title + "/" + row.title).find(filter) == std::string::npos) continue;
        if (group != row.group.title) {
            if (!group.empty()) fprintf(out, "\n");
            printHead(out, row.group);
        }
        group = row.group.title;
        printRow(out, row);
    }
}

void fail(const std::string& why) {
    fprintf(stderr, "bench: %s\n", why.c_str());
    exit(1);
}

}  // namespace bench
