#include "bench/Table.h"

#include <fmt/format.h>

#include <cmath>

namespace zavbench {

namespace {

bool isThere(const Row& row, const Medians& medians) {
    return medians.contains(row.ours) && (row.peer.empty() || medians.contains(row.peer));
}

double ratio(const Row& row, const Medians& medians) {
    return medians.at(row.ours) / medians.at(row.peer);
}

bool reached(const Row& row, const Medians& medians) {
    return row.peer.empty() || row.bound == 0 || ratio(row, medians) <= row.bound;
}

std::string figure(const std::string& name, double value) {
    if (name.ends_with("/bytes")) return fmt::format("{:.1f} MiB", value / 1048576);
    if (name.ends_with("/instructions")) return fmt::format("{:.1f} M", value / 1e6);
    if (std::isnan(value)) return "absent";
    if (name.ends_with("/facts")) return fmt::format("{:.0f}", value);
    if (name.ends_with("/growth")) return fmt::format("{:.2f}", value);
    if (value >= 1) return fmt::format("{:.2f} s", value);
    if (value >= 1e-3) return fmt::format("{:.2f} ms", value * 1e3);
    if (value >= 1e-6) return fmt::format("{:.2f} us", value * 1e6);
    return fmt::format("{:.0f} ns", value * 1e9);
}

// Formats a ratio or its bound.
std::string factor(double value) {
    if (std::isnan(value)) return "";
    return value < 0.1 ? fmt::format("{:.3f}", value) : fmt::format("{:.2f}", value);
}

// A bound is not reached without the peer.
std::string verdict(const Row& row, const Medians& medians) {
    if (std::isnan(ratio(row, medians))) return "absent";
    if (row.bound == 0) return "";
    return reached(row, medians) ? "yes" : "NO";
}

void printRow(std::ostream& out, const std::string& work, const std::string& ours, const std::string& peer,
              const std::string& ratio, const std::string& bound, const std::string& verdict) {
    out << fmt::format("| {:<70} | {:>9} | {:>9} | {:>5} | {:>5} | {:<7} |\n", work, ours, peer, ratio, bound,
                       verdict);
}

}  // namespace

void printTable(std::ostream& out, const std::vector<Row>& rows, const Medians& medians) {
    printRow(out, "work, and what it is held against", "ours", "peer", "ratio", "bound", "reached");
    out << fmt::format("|{:-<72}|{:->11}|{:->11}|{:->7}|{:->7}|{:-<9}|\n", "", ":", ":", ":", ":", "");
    for (const Row& row : rows) {
        if (!isThere(row, medians)) continue;
        const std::string ours = figure(row.ours, medians.at(row.ours));
        if (row.peer.empty()) {
            printRow(out, row.work, ours, "", "", "", "");
            continue;
        }
        printRow(out, row.work, ours, figure(row.peer, medians.at(row.peer)), factor(ratio(row, medians)),
                 row.bound == 0 ? "" : factor(row.bound), verdict(row, medians));
    }
}

bool allReached(const std::vector<Row>& rows, const Medians& medians) {
    bool all = true;
    for (const Row& row : rows) all = all && (!isThere(row, medians) || reached(row, medians));
    return all;
}

}  // namespace zavbench
