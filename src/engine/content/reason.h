// The end of an error line that hands on what a library says.
#pragma once

// `reason` itself, or words for one that is null or empty.
inline const char* given_reason(const char* reason)
{
    return reason != nullptr && *reason != '\0' ? reason : "no reason given";
}
