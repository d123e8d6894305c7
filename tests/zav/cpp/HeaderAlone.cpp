// zav.hpp compiles before any other header, with and without exceptions.
#include "include/zav.hpp"

#include <type_traits>

static_assert(!std::is_copy_constructible_v<zav::Library> &&
              std::is_nothrow_move_constructible_v<zav::Library>);
static_assert(!std::is_copy_constructible_v<zav::Hardware> &&
              std::is_nothrow_move_assignable_v<zav::Hardware>);
static_assert(!std::is_copy_constructible_v<zav::Software> &&
              std::is_nothrow_move_assignable_v<zav::Software>);
static_assert(std::is_trivially_copyable_v<zav::Instance> && std::is_trivially_copyable_v<zav::Result>);
static_assert(sizeof(zav::Text) == sizeof(const wchar_t*));

// Views of a temporary are refused.
template <class Owner, class = void>
constexpr bool kGivesInstances = false;
template <class Owner>
constexpr bool kGivesInstances<Owner, std::void_t<decltype(std::declval<Owner>().try_instances(1))>> = true;
static_assert(kGivesInstances<zav::Hardware&> && !kGivesInstances<zav::Hardware>);
template <class Owner, class = void>
constexpr bool kGivesResults = false;
template <class Owner>
constexpr bool kGivesResults<Owner, std::void_t<decltype(std::declval<Owner>().try_results())>> = true;
static_assert(kGivesResults<const zav::Software&> && !kGivesResults<zav::Software>);

#ifdef __cpp_lib_ranges
#include <ranges>

template <class Range>
constexpr bool kIsView = std::ranges::random_access_range<Range>&& std::ranges::sized_range<Range>&&
    std::ranges::view<Range>&& std::ranges::borrowed_range<Range>;
static_assert(kIsView<zav::Instances> && kIsView<zav::Fields>);
static_assert(kIsView<zav::Results> && kIsView<zav::Variables> && kIsView<zav::Warnings>);
#endif

// Each function that can fail has a form without exceptions.
int useWithoutExceptions() {
    zav::Expected<zav::Library> library = zav::Library::open("header");
    if (!library) return library.code();
    zav::Expected<zav::Hardware> hardware = library->try_hardware({"Processor", ZAV_HW_MEMORY});
    if (!hardware) return hardware.code();
    const zav::Expected<zav::Instances> processors = hardware->try_instances("Processor");
    if (!processors) return processors.code();
    for (const zav::Instance processor : *processors) {
        if (processor.try_value(L"Name").value_or(zav::Text()).empty()) return 1;
    }
    const zav::Expected<zav::Software> software = library->try_software("<Signature/>");
    return software.code();
}
