#pragma once

#include <unknwn.h>

// The objects that OneNote's clients meet. They answer as `Behaviour` wants it, on the thread that made them.

/// OneNote's class object, without a reference for the caller.
IClassFactory* ClassObject();

/// Whether a client has asked for an object yet, got it or not.
bool HadClients();

/// Whether a client holds a reference to one of the objects. When the last one goes, "No references" is recorded.
bool HasClients();
