#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "include/tarnwick.h"
#include "tools/messages.h"
#include "tools/report.h"

namespace tarnwick::tool {

// Owner of a loaded model.
class Handle {
  public:
    Handle() = default;
    explicit Handle(Problem* lp) : lp_(lp) {}
    Handle(Handle&& other) noexcept : lp_(other.lp_) { other.lp_ = nullptr; }
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(lp_, other.lp_);
        return *this;
    }
    ~Handle()
    {
        if (lp_) unloadprob(&lp_);
    }
    Problem* get() const { return lp_; }

  private:
    Problem* lp_ = nullptr;
};

// A matrix by columns, as the load functions take it. No array is empty, so that each has an address.
struct ColumnMatrix {
    std::vector<std::int32_t> begins;   // [columns]
    std::vector<std::int32_t> counts;   // [columns]
    std::vector<std::int32_t> indices;  // [entries]
    std::vector<double> values;         // [entries]
    std::int32_t entries = 0;
};

// A model file and the loaded model, which points into the arrays here. The library takes no model
// without a row or without a variable: the arrays then hold one, free of any meaning, that is not
// counted.
struct Model {
    std::string file;
    std::int32_t objsen = 1;
    std::int32_t numcols = 0, numrows = 0;
    bool has_quadratic = false;
    std::int32_t integers = 0;

    std::vector<double> obj, rhs, lb, ub, start;
    std::vector<char> sense, ctype;
    ColumnMatrix matrix, quadratic;
    Handle lp;

    bool is_linear_program() const { return !has_quadratic && integers == 0; }
};

// Reads and loads a file. Throws Failure, with the file's name in front and the line where it can be
// told.
Model read_model(const std::string& file, Messages& messages);

// Sizes, and what kinds of rows, bounds and variables there are.
Group size_group(const Model& model);
Report model_report(const Model& model);

}  // namespace tarnwick::tool
