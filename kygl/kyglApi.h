#pragma once

/// Marks what libkygl exports; everything else in it is hidden.
#define KYGL_API __attribute__((visibility("default")))

/// Marks the members of exported classes that nobody outside calls.
#define KYGL_LOCAL __attribute__((visibility("hidden")))
