// Lists of pack entries: what editing/pack_files writes and takes apart.
#pragma once

#include <cstdint>

struct pack_file;

// A singly linked list that ends in an empty node (`name` null); an empty list is
// that node alone.
struct pack_file_list {
    char* name;           // owned; the entry's name; null in the last node
    char* source_dir;     // owned; the bytes come from the file source_dir + name; null: from an existing pack
    pack_file_list* next; // owned
};

pack_file_list* pack_file_list_new();

// Stores the two strings (from malloc; the list frees them) in the list's last
// node and gives it a new last node, which is returned: appending to that is quick.
// Nothing is put between directory and name: a directory ends in "/". A null name
// appends nothing.
pack_file_list* pack_file_list_append(pack_file_list* list, char* name, char* source_dir);

// Removes the entry with that number, from 0, and returns the list's head. Prints
// "Error: index not found!" when there is none.
pack_file_list* pack_file_list_remove(pack_file_list* list, uint32_t index);

void pack_file_list_free(pack_file_list* list);  // null does nothing
void pack_file_list_clear(pack_file_list* list); // `list` itself stays, as an empty list

// All names of a pack in index order, taken from no directory; an empty list for a null pack.
// Prints "unexpected error" for an index that ends without a terminator.
pack_file_list* pack_list_names(const pack_file* pack);
