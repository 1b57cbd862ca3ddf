#pragma once

/// When the library was built, in the form "timestamp=[Sun Sep 10 12:00:13 2017]", in UTC. Made
/// anew by the build whenever a source of the library changed; honours SOURCE_DATE_EPOCH.
extern const char kyglBuildStamp[];
