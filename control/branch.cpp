// Branch and bound. A node is worked off by solving its two children, each with one bound of one
// variable moved past the fractional value. The search dives until it has an incumbent, takes the
// best bound while the tree is small, and dives again when it has grown:
//
//     pick(node) = nothing                           if its objective is above the cut-off
//                = node                              if it is open
//                = better(pick(left), pick(right))   if it is branched
//                = nothing                           otherwise
//
// Every node keeps the value of this rule for its own subtree. A change then costs its path to the
// root instead of a walk over the tree. Walks go from parent to child and back by the links: the
// depth of a tree never touches the stack.

#include "control/branch.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "control/services.h"
#include "platform/memory.h"

namespace tarnwick {

// ---- the tree

namespace {

constexpr double NO_CUTOFF = 1e30;  // and beyond

BranchNode* deepest_first(BranchNode* node) noexcept
{
    while (node->left || node->right) node = node->left ? node->left : node->right;
    return node;
}

// The next node in the order children before parents, left before right; null after the root.
BranchNode* next_after(const BranchNode* node) noexcept
{
    BranchNode* const parent = node->parent;
    if (parent && parent->left == node && parent->right) return deepest_first(parent->right);
    return parent;
}

// Releases a node without children.
void delete_leaf(BranchTree& tree, BranchNode* node) noexcept
{
    if (BranchNode* const parent = node->parent)
        (parent->left == node ? parent->left : parent->right) = nullptr;
    release_block(node->nodedata);
    release_block(node->nodeaux);
    release_block(node);
    --tree.livenodes;
}

}  // namespace

BranchTree::~BranchTree()
{
    if (!root) return;
    for (BranchNode* node = deepest_first(root); node;) {
        BranchNode* const next = next_after(node);
        delete_leaf(*this, node);
        node = next;
    }
}

// ---- picking

namespace {

// Of two candidates, a from the left. Best first: the lower objective. Diving: the deeper one, and
// at equal depth the lower objective. a wins a tie.
BranchNode* better(const BranchTree& tree, BranchNode* a, BranchNode* b) noexcept
{
    if (!a) return b;
    if (!b) return a;
    if (tree.bestfirst == 0 && a->depth != b->depth) return a->depth > b->depth ? a : b;
    return b->objective < a->objective ? b : a;
}

BranchNode* pick_of(const BranchNode* node) noexcept { return node ? node->pick : nullptr; }

BranchNode* pick_at(const BranchTree& tree, BranchNode& node) noexcept
{
    if (node.objective > tree.cutoff) return nullptr;
    switch (node.state) {
    case NODE_OPEN: return &node;
    case NODE_BRANCHED: return better(tree, pick_of(node.left), pick_of(node.right));
    case NODE_INCUMBENT:
    case NODE_CLOSED: break;
    }
    return nullptr;
}

// After a change of the node: its pick, and those of the ancestors that it reaches.
void refresh_path(const BranchTree& tree, BranchNode& changed) noexcept
{
    for (BranchNode* node = &changed; node; node = node->parent) {
        BranchNode* const pick = pick_at(tree, *node);
        if (pick == node->pick) return;
        node->pick = pick;
    }
}

// After a change of the mode or the cut-off, or of many nodes.
void refresh_all(const BranchTree& tree) noexcept
{
    for (BranchNode* node = deepest_first(tree.root); node; node = next_after(node))
        node->pick = pick_at(tree, *node);
}

void set_state(const BranchTree& tree, BranchNode& node, NodeState state) noexcept
{
    node.state = state;
    refresh_path(tree, node);
}

// Open nodes that the incumbent excludes are closed as they come up.
BranchNode* pick_next(const BranchTree& tree) noexcept
{
    BranchNode* pick = tree.root->pick;
    while (pick && tree.incumbent && pick->objective > tree.incumbent->objective) {
        set_state(tree, *pick, NODE_CLOSED);
        pick = tree.root->pick;
    }
    return pick;
}

// The cut-off orders the search and doesn't end it: when nothing is left below it, it goes.
BranchNode* pick_or_lift_cutoff(BranchTree& tree) noexcept
{
    BranchNode* const pick = pick_next(tree);
    if (pick || tree.cutoff >= NO_CUTOFF) return pick;
    tree.cutoff = NO_CUTOFF;
    refresh_all(tree);
    return pick_next(tree);
}

// ---- the branching variable

struct Fraction {
    double nearest;   // integer
    double distance;  // from it, 0 to 0.5
};

Fraction fraction_of(double x) noexcept
{
    const double below = std::floor(x);
    const double f = x - below;
    return f > 0.5 ? Fraction{below + 1.0, 1.0 - f} : Fraction{below, f};
}

void clamp_point(const SolveRun& run) noexcept
{
    for (std::int32_t j = 0; j < run.numvars; ++j) {
        if (run.x[j] < run.lb[j])
            run.x[j] = run.lb[j];
        else if (run.x[j] > run.ub[j])
            run.x[j] = run.ub[j];
    }
}

// The variable to branch on, or -1 when all are integral; those within tol of an integer are put
// there. A fractional binary wins at once, then the narrowest finite range, then the most
// fractional. Ties go to the earlier candidate.
std::int32_t choose_variable(const SolveRun& run, double tol) noexcept
{
    clamp_point(run);
    if (!run.intflags) return -1;

    std::int32_t most_fractional = -1, narrowest = -1;
    double largest = 0.0, smallest_range = INFINITE_BOUND;
    const std::int32_t count = run.branchlist ? run.branchcount : run.numvars;
    for (std::int32_t k = 0; k < count; ++k) {
        const std::int32_t j = run.branchlist ? run.branchlist[k] - 1 : k;
        if (run.intflags[static_cast<std::size_t>(j)] == 0) continue;

        const auto [nearest, distance] = fraction_of(run.x[j]);
        if (distance < tol) {
            run.x[j] = nearest;
            continue;
        }
        const double lower = run.lb[j], upper = run.ub[j];
        if (lower == 0.0 && upper == 1.0) return j;
        if (distance > largest) {
            largest = distance;
            most_fractional = j;
        }
        const bool is_boxed = lower > -INFINITE_BOUND && upper < INFINITE_BOUND;
        if (is_boxed && upper - lower < smallest_range) {
            smallest_range = upper - lower;
            narrowest = j;
        }
    }
    return narrowest >= 0 ? narrowest : most_fractional;
}

// ---- nodes and the run

bool is_solved(EngineResult result) noexcept
{
    return result == ENGINE_OPTIMAL || result == ENGINE_CONVERGED || result == ENGINE_STALLED;
}

// What the engine attached belongs to the run until a node takes it.
void drop_data(SolveRun& run) noexcept
{
    release_block(std::exchange(run.nodedata, nullptr));
    release_block(std::exchange(run.nodeaux, nullptr));
}

// A NaN compares with nothing: the search could only drop it, and with it what lies beneath.
bool is_number(const SolveRun& run) noexcept
{
    return std::isfinite(run.objective) &&
           std::all_of(run.x, run.x + run.numvars, [](double x) { return std::isfinite(x); });
}

// Solves with the bounds in the run. False: the search is over, because the engine says so, has left
// a stop behind, or gives an optimum that is none.
bool solve(EngineEntry engine_solve, SolveRun& run) noexcept
{
    bool goes_on =
        engine_solve(run) != 0 && reportprogress(run.control, EVENT_POLL, 0, 0.0) == STOP_NONE;
    if (goes_on && is_solved(run.result) && !is_number(run)) {
        run.result = ENGINE_MODELCHECK;
        goes_on = false;
    }
    if (!goes_on) drop_data(run);
    return goes_on;
}

// Takes over the run's outcome. Null: no memory.
BranchNode* create_node(BranchTree& tree, SolveRun& run, std::int32_t branchvar) noexcept
{
    auto* const node = static_cast<BranchNode*>(allocate_block(sizeof(BranchNode)));
    if (!node) return nullptr;
    node->result = run.result;
    node->objective = run.objective;
    node->nodedata = std::exchange(run.nodedata, nullptr);
    node->nodeaux = std::exchange(run.nodeaux, nullptr);
    node->branchvar = branchvar;
    node->branchvalue = branchvar >= 0 ? run.x[branchvar] : 0.0;
    ++tree.livenodes;
    return node;
}

// Puts the node back as if it had just been solved. Its data stays its own; an engine forgets the
// run's pointer to it when it solves.
//
// A branching value lies within the bounds of its node, so each step narrows what the steps before
// it have left, and they can be taken in any order: here from the node up.
void restore(const BranchTree& tree, const BranchNode& node, SolveRun& run) noexcept
{
    run.result = node.result;
    run.objective = node.objective;
    run.nodedata = node.nodedata;
    run.nodeaux = node.nodeaux;
    std::copy_n(tree.rootlb.data(), run.numvars, run.lb);
    std::copy_n(tree.bestx.data(), run.numvars, run.x);
    std::copy_n(tree.rootub.data(), run.numvars, run.ub);

    for (const BranchNode *child = &node, *p = node.parent; p; child = p, p = p->parent) {
        const double below = std::floor(p->branchvalue);
        double& lower = run.lb[p->branchvar];
        double& upper = run.ub[p->branchvar];
        if (p->left == child)
            upper = std::min(upper, below);
        else
            lower = std::max(lower, below + 1.0);
    }
}

// Tells of the incumbent in the sense of the model. True: the search must stop.
bool node_event_stops(const BranchTree& tree) noexcept
{
    if (!tree.incumbent)
        return reportprogress(tree.control, EVENT_NODE, tree.intsolutions, 0.0) != STOP_NONE;
    const double objective = tree.incumbent->objective;
    const bool maximizes = getintinfo(tree.control, INFO_MAXIMIZE) == 1;
    return reportprogress(tree.control, EVENT_NODE | EVENT_FINAL_DONE, tree.intsolutions,
                          maximizes ? -objective : objective) != STOP_NONE;
}

// ---- children

void make_incumbent(BranchTree& tree, BranchNode& node, const SolveRun& run) noexcept
{
    if (tree.incumbent) set_state(tree, *tree.incumbent, NODE_CLOSED);
    tree.incumbent = &node;
    std::copy_n(run.x, run.numvars, tree.bestx.data());
}

// Whether the outcome of a solve is worth a node. A child claims no better bound than its parent.
bool is_kept(BranchTree& tree, const BranchNode& parent, SolveRun& run,
             std::int32_t& branchvar) noexcept
{
    if (!is_solved(run.result)) return false;
    if (!(run.objective - parent.objective > tree.tol)) run.objective = parent.objective;
    branchvar = choose_variable(run, tree.tol);
    if (branchvar < 0 && tree.intsolutions < std::numeric_limits<std::int32_t>::max())
        ++tree.intsolutions;
    return !(tree.incumbent && run.objective > tree.incumbent->objective);
}

enum class Child { dropped, open, incumbent, no_memory };

// `link` is the parent's left or right.
Child attach(BranchTree& tree, BranchNode& parent, BranchNode*& link, SolveRun& run) noexcept
{
    std::int32_t branchvar = -1;
    if (!is_kept(tree, parent, run, branchvar)) {
        drop_data(run);
        return Child::dropped;
    }
    BranchNode* const child = create_node(tree, run, branchvar);
    if (!child) {
        drop_data(run);
        run.result = ENGINE_NOMEMORY;
        return Child::no_memory;
    }
    link = child;
    child->parent = &parent;
    child->depth = parent.depth + 1;
    set_state(tree, *child, branchvar < 0 ? NODE_INCUMBENT : NODE_OPEN);
    if (branchvar >= 0) return Child::open;
    make_incumbent(tree, *child, run);
    return Child::incumbent;
}

// ---- pruning

bool is_dead(const BranchTree& tree, const BranchNode& node) noexcept
{
    const bool is_worse = node.objective > tree.incumbent->objective;
    switch (node.state) {
    case NODE_OPEN: return is_worse;
    case NODE_BRANCHED: return &node != tree.root && !node.left && !node.right;
    case NODE_INCUMBENT: return &node != tree.incumbent && is_worse;
    case NODE_CLOSED: break;
    }
    return true;
}

// After a new incumbent. What lies beneath a node that is worse is worse as well, so children go
// before their parents, and a node that goes is a leaf by then.
void prune(BranchTree& tree) noexcept
{
    for (BranchNode* node = deepest_first(tree.root); node;) {
        BranchNode* const next = next_after(node);
        if (is_dead(tree, *node)) delete_leaf(tree, node);
        node = next;
    }
    refresh_all(tree);
}

// ---- the search

constexpr std::int32_t SMALL_TREE = 512;   // nodes, below which the search goes best first
constexpr std::int32_t LARGE_TREE = 1024;  // nodes, from which on it dives

void update_mode(BranchTree& tree) noexcept
{
    const std::int32_t was = tree.bestfirst;
    const bool goes_best_first =
        was == 1 ? tree.livenodes < LARGE_TREE : tree.incumbent && tree.livenodes < SMALL_TREE;
    tree.bestfirst = goes_best_first ? 1 : 0;
    if (tree.bestfirst != was) refresh_all(tree);
}

bool gap_is_closed(const BranchTree& tree, double bound) noexcept
{
    if (!tree.incumbent) return false;
    const double difference = tree.incumbent->objective - bound;
    return std::fabs(difference / (std::fabs(bound) + 1.0)) <= tree.gap;
}

// Why the loop ended.
enum class Ending { stopped, complete, gap_reached };

// Solves both children of the node, which has been restored to the run. False: the search is over.
bool branch(BranchTree& tree, BranchNode& node, EngineEntry engine_solve, SolveRun& run) noexcept
{
    const std::int32_t v = node.branchvar;

    run.ub[v] = std::floor(node.branchvalue);
    if (!solve(engine_solve, run)) return false;
    const Child left = attach(tree, node, node.left, run);
    if (left == Child::no_memory || node_event_stops(tree)) return false;

    restore(tree, node, run);
    run.lb[v] = std::ceil(node.branchvalue);
    if (!solve(engine_solve, run)) return false;
    const Child right = attach(tree, node, node.right, run);
    if (right == Child::no_memory) return false;

    if (left == Child::incumbent || right == Child::incumbent) prune(tree);
    return true;
}

Ending search(BranchTree& tree, EngineEntry engine_solve, SolveRun& run) noexcept
{
    double bound = tree.root->objective;
    for (BranchNode* node = tree.root;;) {
        restore(tree, *node, run);
        set_state(tree, *node, NODE_BRANCHED);
        if (node_event_stops(tree)) return Ending::stopped;

        if (!branch(tree, *node, engine_solve, run)) return Ending::stopped;
        update_mode(tree);
        node = pick_or_lift_cutoff(tree);
        if (!node) return Ending::complete;

        if (tree.bestfirst == 1) bound = node->objective;
        if (gap_is_closed(tree, bound)) return Ending::gap_reached;
    }
}

void read_settings(BranchTree& tree, SolveControl* control) noexcept
{
    tree.control = control;
    getdblinfo(control, &tree.tol, INFO_FEASTOL);
    getdblinfo(control, &tree.gap, INFO_MIPGAP);
    getdblinfo(control, &tree.cutoff, INFO_CUTOFF);
    if (getintinfo(control, INFO_MAXIMIZE) == 1) tree.cutoff = -tree.cutoff;
    if (!(std::fabs(tree.cutoff) < NO_CUTOFF)) tree.cutoff = NO_CUTOFF;
}

bool create_root(BranchTree& tree, SolveRun& run, std::int32_t branchvar) noexcept
{
    const auto n = static_cast<std::size_t>(run.numvars);
    if (!tree.rootlb.create(n) || !tree.rootub.create(n) || !tree.bestx.create(n)) return false;
    std::copy_n(run.lb, n, tree.rootlb.data());
    std::copy_n(run.ub, n, tree.rootub.data());
    std::copy_n(run.x, n, tree.bestx.data());
    tree.root = create_node(tree, run, branchvar);
    return tree.root != nullptr;
}

// The answer goes to the run: the incumbent, or without one the root's point as infeasible. The
// tree goes next, and its nodes' data with it.
void leave_answer(BranchTree& tree, SolveRun& run, Ending ending) noexcept
{
    BranchNode& answer = tree.incumbent ? *tree.incumbent : *tree.root;
    if (!tree.incumbent) answer.result = ENGINE_INFEASIBLE;
    if (ending == Ending::stopped) answer.result = run.result;
    restore(tree, answer, run);
    run.nodedata = nullptr;
    run.nodeaux = nullptr;
}

}  // namespace

std::int32_t branchsolve(EngineEntry engine_solve, SolveRun& run) noexcept
{
    BranchTree tree;
    read_settings(tree, run.control);

    if (!solve(engine_solve, run)) return RESULT_STANDS;
    const std::int32_t branchvar = is_solved(run.result) ? choose_variable(run, tree.tol) : -1;
    if (branchvar < 0) {
        drop_data(run);
        return RESULT_STANDS;
    }
    if (!create_root(tree, run, branchvar)) {
        drop_data(run);
        return run.result = ENGINE_NOMEMORY;
    }

    const Ending ending = search(tree, engine_solve, run);
    leave_answer(tree, run, ending);
    return ending == Ending::gap_reached ? ENGINE_GAPREACHED : RESULT_STANDS;
}

}  // namespace tarnwick
