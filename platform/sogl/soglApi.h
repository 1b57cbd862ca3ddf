#pragma once

/// Marks what libsogl exports; everything else in it is hidden.
#define SOGL_API __attribute__((visibility("default")))
