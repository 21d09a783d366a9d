// The population: members in the order of their fitness, lowest first. A place is found by
// bisection and the rest moved up, so that a position is a place in memory.
//
//     fitness(1) <= fitness(2) <= ... <= fitness(count),   count <= popsize between inserts
//
// When one too many is in, one of the worst three tenths goes, the last excepted. An infeasible one
// that is drawn always goes; a feasible one is spared the more often, the rarer feasible members are.

#include "nonsmooth/population.h"

#include <algorithm>
#include <new>

#include "nonsmooth/random.h"
#include "platform/clock.h"

namespace tarnwick {

namespace {

constexpr double CULLED_SHARE = 0.3;
constexpr int LEAST_CULLED = 3;

void release_member(NspMember* member) noexcept
{
    if (!member) return;
    release_block(member->rowvalues);
    release_block(member);
}

NspMember* create_member(const NspEngine& nsp) noexcept
{
    const auto n = static_cast<std::size_t>(nsp.variables);
    void* const block = allocate_record(sizeof(NspMember) + n * sizeof(double));
    if (!block) return nullptr;
    auto* const point = reinterpret_cast<double*>(static_cast<char*>(block) + sizeof(NspMember));
    std::copy_n(nsp.point.data(), n, point);
    return new (block) NspMember{nsp.fitness, nsp.objective, point, nullptr};
}

// Keeps the feasible member of lowest objective; a better one is an improvement, the first is not.
void count_feasible(NspEngine& nsp, NspMember* member) noexcept
{
    count_up(nsp.feasiblecount);
    if (!nsp.bestfeasible) {
        nsp.bestfeasible = member;
    } else if (member->objective < nsp.bestfeasible->objective) {
        nsp.bestfeasible = member;
        nsp.lastimprovetick = tick_count();
    }
}

// The index of a new member: behind the head unless it is better, in front of others of its fitness.
int place_of(const NspEngine& nsp, double fitness) noexcept
{
    NspMember* const* const first = nsp.ranking.data();
    if (nsp.count == 0 || fitness < (*first)->fitness) return 0;
    const auto is_better = [](const NspMember* member, double value) {
        return member->fitness < value;
    };
    return static_cast<int>(std::lower_bound(first + 1, first + nsp.count, fitness, is_better) -
                            first);
}

void remove_at(NspEngine& nsp, int index) noexcept
{
    NspMember** const first = nsp.ranking.data();
    NspMember* const member = first[index];
    std::copy(first + index + 1, first + nsp.count, first + index);
    --nsp.count;
    nsp.feasiblemembers -= is_feasible(*member);
    release_member(member);
}

void pop_cull(NspEngine& nsp, const NspMember* guarded) noexcept
{
    const int length = nsp.count;
    const double share = static_cast<double>(nsp.feasiblemembers) / length;
    const int k = std::min(length - static_cast<int>(length * CULLED_SHARE), length - LEAST_CULLED);
    for (;;) {
        const int position = k + static_cast<int>(rng_uniform(nsp.seed) * (length - k));
        const NspMember* const victim = nsp.ranking[position - 1];
        if (victim == guarded || victim == nsp.bestfeasible) continue;
        if (is_feasible(*victim) && !(rng_uniform(nsp.seed) <= share)) continue;
        remove_at(nsp, position - 1);
        return;
    }
}

}  // namespace

NspEngine::~NspEngine() { pop_release(*this); }

bool pop_create(NspEngine& nsp) noexcept
{
    const int popsize = nsp.popsize;
    return nsp.places.create([&nsp, popsize](auto& layout) {
        layout(nsp.ranking, popsize);
        layout(nsp.mutationuse, popsize - 1);
        layout(nsp.crossoveruse, popsize - 1);
    });
}

void pop_release(NspEngine& nsp) noexcept
{
    for (int k = 0; k < nsp.count; ++k) release_member(nsp.ranking[k]);
    release_member(nsp.pending);
    nsp.count = 0;
    nsp.feasiblemembers = 0;
    nsp.bestfeasible = nsp.current = nsp.pending = nullptr;
}

EngineResult nsp_new_member(NspEngine& nsp) noexcept
{
    NspMember* const member = create_member(nsp);
    if (!member) return ENGINE_NOMEMORY;
    nsp.pending = nsp.current = member;
    if (is_feasible(*member)) count_feasible(nsp, member);
    return CANDIDATE_STANDS;
}

void pop_insert(NspEngine& nsp) noexcept
{
    NspMember* const member = nsp.pending;
    NspMember** const first = nsp.ranking.data();
    const int index = place_of(nsp, member->fitness);
    std::copy_backward(first + index, first + nsp.count, first + nsp.count + 1);
    first[index] = member;
    nsp.pending = nullptr;
    ++nsp.count;
    nsp.feasiblemembers += is_feasible(*member);
    if (nsp.count > nsp.popsize) pop_cull(nsp, member);
}

}  // namespace tarnwick
