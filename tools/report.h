#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick::tool {

// What a command has to tell, apart from the form in which it is written. Nothing stands for a value
// that does not exist.
using Cell = std::variant<std::monostate, std::int64_t, double, std::string>;

// Keys are for programs, labels and titles for people.
struct Fact {
    std::string key;
    std::string label;  // empty: in text, the value goes on the line of the fact before
    Cell value;
};

struct Group {
    std::string key;
    std::string title;  // empty: in text, the facts stand without a heading
    std::vector<Fact> facts;

    void add(const char* fact, const char* label, Cell value)
    {
        facts.push_back({fact, label, std::move(value)});
    }
};

struct Column {
    std::string key;
    std::string title;
    bool is_limit = false;  // in text, an infinite value reads "none"
};

// The first cell of a row is its name, for which there is no column.
struct Table {
    std::string key;
    std::string title;
    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
    bool leaves_out_zeros = false;  // in text, a long table keeps the rows that hold a value
};

struct Report {
    std::vector<Group> groups;
    std::vector<Table> tables;
};

enum class Format { text, csv, json };

std::string written(const Report& report, Format format);

std::string as_text(const Report& report);
std::string as_csv(const Report& report);
std::string as_json(const Report& report);

}  // namespace tarnwick::tool
