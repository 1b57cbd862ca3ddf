#pragma once

/// Whether `kyglSetContext` has registered the id. Takes the registry's lock.
bool kyglIsRegistered(unsigned int id);
