// The entries of a pack beside its documents: what the player never takes, and what it cannot.
#pragma once

#include "authoring/check/finding.h"
#include "authoring/check/read_documents.h"

// Whether a file begins like a pack, or holds a document at least: the player does not ask how one begins. False for
// null. Prints nothing.
bool looks_like_a_pack(const pack_file* pack);

// Findings without a document: entries that no document names, a name that stands twice, an index that does not end.
// Of the documents the names in their sections of meshes, image textures and cube maps count. Nothing for a null pack.
void check_pack(const pack_file* pack, const read_document& loading, const read_document& show, finding_list& findings);
