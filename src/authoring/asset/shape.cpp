#include "authoring/asset/shape.h"
