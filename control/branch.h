#pragma once

#include <cstdint>

#include "control/engine.h"
#include "platform/array.h"

// The record of the search over integer variables. Each node stands for the part of the model that
// lies within its bounds. It names the variable to branch on, and its children are made together, as
// soon as it is picked:
//
//     left     x[branchvar] <= floor(branchvalue)
//     right    x[branchvar] >= floor(branchvalue) + 1
//
// A node keeps no bounds: they follow from those of the root and the steps that lead to the node.
// Objectives are in the sense of minimisation. A child's is never below its parent's, so that each
// bounds all that lies beneath.

namespace tarnwick {

enum NodeState : std::int32_t {
    NODE_OPEN = 0,
    NODE_BRANCHED = 1,
    NODE_INCUMBENT = 2,
    NODE_CLOSED = 3,
};

struct BranchNode {
    NodeState state;
    BranchNode* left;
    BranchNode* right;
    BranchNode* parent;
    EngineResult result;     // of the solve that made the node
    double objective;        // of that solve: a lower bound for the subtree
    double* nodedata;        // owned; what the engine attached
    void* nodeaux;           // owned; likewise
    std::int32_t branchvar;  // from 0; -1: all integer variables are integral
    double branchvalue;
    std::int32_t depth;  // number of ancestors
    BranchNode* pick;    // the node that the subtree gives, or null; always current
};

struct BranchTree {
    BranchTree() noexcept = default;
    BranchTree(const BranchTree&) = delete;
    BranchTree& operator=(const BranchTree&) = delete;
    ~BranchTree();

    SolveControl* control = nullptr;
    std::int32_t bestfirst = 0;     // 0 dives, 1 takes the best bound
    std::int32_t livenodes = 0;     // held now, of any state
    std::int32_t intsolutions = 0;  // found so far, those not kept included
    double tol = 0.0;     // absolute: what counts as integral, and as no change of the objective
    double gap = 0.0;     // relative with 1: between incumbent and bound
    double cutoff = 0.0;  // nodes above it wait; 1e30: none does
    Array<double> rootlb, rootub;  // numvars, bounds after the root's solve
    Array<double> bestx;  // numvars, the incumbent's point; before there is one, the root's
    BranchNode* root = nullptr;
    BranchNode* incumbent = nullptr;
};

extern "C" {

// The strategy of a model with integer variables, over any engine for continuous ones.
std::int32_t TARNWICK_CALL branchsolve(EngineEntry engine_solve, SolveRun& run) noexcept;

}  // extern "C"

}  // namespace tarnwick
