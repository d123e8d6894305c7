#pragma once

namespace zavcli {

// How JSON and YAML write the values of fields.
enum class JsonValues {
    Text,   // as the scanner wrote them
    Typed,  // as numbers, booleans and arrays where the catalogue of fields says so; null if unknown
};

}  // namespace zavcli
