/// @file
/// Visibility of symbols: a shared library hides everything without this mark.
#pragma once

/// Marks a type or function as public. It does no harm in a static library, so both kinds of
/// library have the same headers.
#define TROVI_EXPORT __attribute__((visibility("default")))
