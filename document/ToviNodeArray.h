#pragma once

#include "document/ToviOwningArray.h"

class ToviNode;

// The children of a tree node, owned by it.
using ToviNodeArray = ToviOwningArray<ToviNode>;
