#include <kylib/KyHandable.h>

KyHandable::~KyHandable() = default;

void KyHandable::notifyDelete() {}
