#pragma once

#include <kylib/kylibApi.h>

/// Base of classes that the foundation can hold by handle: a virtual destructor, and a hook for
/// the moment before it runs. It counts no references.
class KYLIB_API KyHandable {
public:
    KyHandable() = default;
    /// There is nothing to copy.
    ///@{
    KyHandable(const KyHandable&) = default;
    KyHandable& operator=(const KyHandable&) = default;
    ///@}
    virtual ~KyHandable();

    /// Called by a holder that is about to destroy the object. Does nothing here.
    virtual void notifyDelete();
};
