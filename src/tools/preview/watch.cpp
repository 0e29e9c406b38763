#include "tools/preview/watch.h"

bool watch_open(file_watch&, std::string&)
{
    return true;
}
void watch_files(file_watch&, const std::vector<std::string>&) { }
bool watch_poll(file_watch&, double, double)
{
    return false;
}
void watch_close(file_watch&) { }
