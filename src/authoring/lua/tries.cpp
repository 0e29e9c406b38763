#include "authoring/lua/tries.h"

std::vector<try_site> find_tries(std::string_view)
{
    return {};
}

std::string with_try_written(std::string_view, const try_site&, double)
{
    return "";
}
