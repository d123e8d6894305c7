// The page without data, which comes with the command. report/ has its sources.
#pragma once

#include <string>
#include <string_view>

namespace zavcli {

// Where a template has its data, once.
inline constexpr std::string_view kDataMark = "@ZAV_DATA@";

// The content of the template. Throws Failure if there is none.
std::string readPageTemplate();

// The page of a template and its data. Throws Failure if the template does not have the mark once.
std::string fillPage(std::string_view page, std::string_view data);

}  // namespace zavcli
