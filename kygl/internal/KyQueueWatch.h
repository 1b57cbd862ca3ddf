#pragma once

#include <kygl/KyDeferredDeleteMap.h>

#include <map>
#include <string>

/// Notices that names of one context pile up in the queue. Guarded by the queue's lock.
///
/// It counts the queue once it is longer than the limit, and then again each time that it has grown
/// by as much as some context has left to its limit, at least by a sixty-fourth. So a push costs a
/// comparison on most occasions, and where several contexts share the queue the limit is exceeded
/// by a sixty-fourth of its length at most when that is noticed.
class KYGL_LOCAL KyQueueWatch {
public:
    using List = KyDArray<KyDeferredDeleteMap::MapObject>;
    struct Lists {
        const List& shaders;
        const List& programs;
        const List& textures;
        const List& buffers;
        long total() const { return shaders.size + programs.size + textures.size + buffers.size; }
    };

    /// A name has joined one of the lists. Reports the contexts that are beyond the limit, and
    /// again when their names have doubled.
    void pushed(const Lists& lists) noexcept;

    /// The names of a context are leaving the lists.
    void emptied(unsigned int context);

    /// The subject of what is reported about a context.
    static std::string subject(unsigned int context);

private:
    void startAnew();
    void look(const Lists& lists);

    long mLookAt = 0;                      ///< the length of the queue from which on to count
    std::map<unsigned int, long> mLimits;  ///< by context: the number beyond which to report
    long mLimit = 0;                       ///< that these began with
    unsigned long mEnables = 0;            ///< of diagnostics, that they were made under
};

/// "3 shaders, 1 program": the kinds that wait.
std::string kyglPendingText(const KyDeferredDeleteMap::Pending& pending);
