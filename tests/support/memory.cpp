#include "tests/support/memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/memory.h"

namespace tarnwick {

namespace {

// Stands before each block.
struct alignas(std::max_align_t) Header {
    std::size_t bytes;
    std::uint64_t seal;
};

constexpr std::uint64_t LIVE_SEAL = 0x7461726e7769636bU;

std::atomic<long> alive{0};
std::atomic<long> allowed{LONG_MAX};
std::atomic<bool> failed{false};

// What a whole run leaves behind; single tests look at blocks_alive themselves.
class NothingStaysAlive : public testing::Environment {
  public:
    void TearDown() override { EXPECT_EQ(blocks_alive(), 0) << "blocks were never released"; }
};

const auto* const registered = testing::AddGlobalTestEnvironment(new NothingStaysAlive);

}  // namespace

void* allocate_block(std::size_t bytes) noexcept
{
    if (bytes == 0) return nullptr;
    if (allowed.fetch_sub(1) <= 0) {
        allowed = 0;
        failed = true;
        return nullptr;
    }
    if (bytes > SIZE_MAX - sizeof(Header)) return nullptr;
    void* const memory = std::calloc(1, sizeof(Header) + bytes);
    if (!memory) return nullptr;

    auto* const header = static_cast<Header*>(memory);
    *header = {.bytes = bytes, .seal = LIVE_SEAL};
    ++alive;
    return header + 1;
}

void* allocate_record(std::size_t bytes) noexcept
{
    void* const block = allocate_block(bytes);
    return block ? std::memset(block, RELEASED_BYTE, bytes) : nullptr;
}

void release_block(void* block) noexcept
{
    if (!block) return;
    auto* const header = static_cast<Header*>(block) - 1;
    if (header->seal != LIVE_SEAL) {
        std::fputs("released what is no live block\n", stderr);
        std::abort();
    }
    header->seal = 0;
    std::memset(block, RELEASED_BYTE, header->bytes);
    std::atomic_signal_fence(std::memory_order_seq_cst);  // the compiler must not drop the filling
    std::free(header);
    --alive;
}

long blocks_alive() noexcept { return alive; }

void allow_allocations(long n) noexcept
{
    allowed = n;
    failed = false;
}

void allow_all_allocations() noexcept { allow_allocations(LONG_MAX); }

bool allocation_failed() noexcept { return failed; }

}  // namespace tarnwick
