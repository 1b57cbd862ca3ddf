#pragma once

/// Marks what libkylib exports; everything else in it is hidden.
#define KYLIB_API __attribute__((visibility("default")))
