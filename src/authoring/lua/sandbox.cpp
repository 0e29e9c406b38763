#include "authoring/lua/sandbox.h"
