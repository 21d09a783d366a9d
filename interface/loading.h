#pragma once

#include <cstdint>
#include <string_view>

#include "interface/problem.h"
#include "platform/olearray.h"

namespace tarnwick {

// Why an argument is refused. Code 0: it isn't.
struct Refusal {
    std::int32_t code = 0;       // of the function; a loader of models returns null instead
    const char* text = nullptr;  // null: told by the code alone

    explicit operator bool() const noexcept { return code != 0; }
};

// Tells of a refusal and hands back its code.
[[gnu::cold]] std::int32_t report(const Refusal& refusal, const char* title) noexcept;

// A matrix as a load function gets it, by columns: the constraint matrix, or Q.
struct MatrixArguments {
    std::int32_t numcols, numrows;
    std::int32_t* beg;    // numcols; these three are null for the dense layout
    std::int32_t* cnt;    // numcols
    std::int32_t* ind;    // length
    double* val;          // length, or numcols runs of numrows values
    std::int32_t length;  // as the caller declares it

    // OLE array mode: the references that were viewed, null for arrays that came without one.
    OleReference begref = nullptr, cntref = nullptr, indref = nullptr, valref = nullptr;
};

// What is said of a faulty matrix, in the order of the tests.
struct MatrixRefusals {
    Refusal begview, cntview, indview, valview;  // no OLE array
    Refusal arrays;                              // some of beg, cnt and ind, but not all
    Refusal beg, cnt, ind;                       // an element out of range
    Refusal val;                                 // too short for a dense matrix
};
extern const MatrixRefusals CONSTRAINT_REFUSALS;

// Views beg, cnt and ind in OLE array mode, where they are neither null nor marked as absent.
Refusal view_indices(MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept;
// Views these three and val. A placeholder for val leaves it null.
Refusal view_matrix(MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept;

// Tests the layout: columns in order and without overlap, inside the arrays, and row indices from 0
// to numrows inclusive. Marks of a dense matrix become null pointers.
Refusal test_matrix(MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept;

// A model as loadlp or loadnlp gets it.
struct ModelArguments {
    std::int32_t objsen;     // 1 minimise, -1 maximise
    double* obj;             // numcols
    double* rhs;             // numrows
    char* sense;             // numrows
    MatrixArguments matrix;  // carries the sizes of the model
    double* var;             // numcols, starting point; null for a linear model
    double* lb;              // numcols
    double* ub;              // numcols
    double* rowrange;        // numrows, or null
    OleReference objref = nullptr;
};

// True if each of the count letters is one of those named.
bool has_only(const char* letters, std::int32_t count, std::string_view named) noexcept;

// Views an array of letters that may be null, in OLE array mode, and gives its reference. False: no
// such array.
bool view_letters(char*& letters, std::int64_t count, OleReference& reference) noexcept;

// Puts a model that has passed its tests into a new Problem.
void keep_model(Problem& problem, std::int32_t problemtype, const ModelArguments& model) noexcept;

}  // namespace tarnwick
