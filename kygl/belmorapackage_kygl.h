#pragma once

#include <kygl/kyglApi.h>

extern "C" {

/// How this library was built, as one zero-terminated text: pairs of `|`, key, `|`, value, the
/// first of which is `|version_tag|\`. Empty where no tool has filled the record after linking. The
/// text is constant and lasts as long as the library is loaded; any thread may call.
///
/// The record is in the library's file between two markers. `kyrecord show` prints it from
/// there, without loading the library.
KYGL_API const char* belmorapackage_kygl();

}  // extern "C"
