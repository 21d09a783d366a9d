#include "platform/floatcontrol.h"

#include <cfenv>

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#include <immintrin.h>
#endif

namespace tarnwick {

#if defined(__SSE__) || defined(_M_X64)

namespace {

// The control register of the vector unit: bits 0 to 5 are sticky flags, which mean nothing here;
// 6 denormals-are-zero, 7 to 12 the exception masks, 13 and 14 the rounding, 15 flush-to-zero.
constexpr unsigned STICKY_FLAGS = 0x003F;
constexpr unsigned MASKED_TO_NEAREST = 0x1F80;

void set_vector_control() noexcept
{
    const unsigned control = _mm_getcsr();
    if ((control & ~STICKY_FLAGS) != MASKED_TO_NEAREST) _mm_setcsr(MASKED_TO_NEAREST);
}

}  // namespace

#endif

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)

namespace {

// The control word of the x87 unit: bits 0 to 5 mask the exceptions, 8 and 9 give the width of the
// significand (2: 53 bits), 10 and 11 the rounding. A 64-bit build computes in the vector unit, and
// its long double must keep the full width that the system's own libraries count on.
#if defined(__SSE2_MATH__)
constexpr unsigned short X87_MEANT = 0x033F;
#else
constexpr unsigned short X87_MEANT = 0x023F;
#endif
constexpr unsigned short X87_FIELDS = 0x0F3F;

void set_x87_control() noexcept
{
    unsigned short control = 0;
    __asm__ volatile("fnstcw %0" : "=m"(control));
    if ((control & X87_FIELDS) == X87_MEANT) return;
    control = static_cast<unsigned short>((control & ~X87_FIELDS) | X87_MEANT);
    // An exception that is pending and unmasked would be raised by the load itself.
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(control));
}

}  // namespace

void set_float_control() noexcept
{
#if defined(__SSE__)
    set_vector_control();
#endif
    set_x87_control();
}

#elif defined(_M_X64)

void set_float_control() noexcept { set_vector_control(); }

#else

// Elsewhere the default environment of the language is round to nearest with nothing trapped.
void set_float_control() noexcept { std::fesetenv(FE_DFL_ENV); }

#endif

}  // namespace tarnwick
