/// @file
/// What a shared library shows of itself; everything without this mark stays inside.
#pragma once

/// Marks a type or function for use from outside the library. It stands the same in a static
/// library, where it does no harm: one set of headers serves both.
#define TROVI_EXPORT __attribute__((visibility("default")))
