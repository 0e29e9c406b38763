// Meshes and pictures of a document, unpacked by workers before the reader asks for them.
//
// Reading walks from record to record, and a record's entry has to be inflated or decoded before anything can be made
// of it. That is a pure function of the entry's bytes, so other cores do it: when reading begins the elements are
// walked once for the entries that they name, and workers unpack these in the reader's order. The reader decides
// everything, as it does without workers: it finds the entry, and asks for what it unpacks to. What is not there, it
// unpacks itself: what nobody has begun, and what cannot be unpacked, since it is the reader who says why.
//
// There is a worker for each core but the one that reads; none with a single core, for small documents, and where no
// thread is to be had. What has been unpacked and not asked for is bounded (decode_ahead_room), so that memory does not
// fill with what comes later, and not with the cores of a machine either. Workers print nothing and call no OpenGL;
// signals are not theirs. The pack must be there until they are ended, the elements need not.
#pragma once

#include "model/image_decode.h"

#include <cstdint>
#include <memory>

struct pack_file;
struct xml_node;

constexpr uint32_t max_decode_workers = 16;
constexpr uint64_t decode_ahead_room = 4u << 20;       // bytes that each worker, and the reader, may be ahead,
constexpr uint64_t most_decode_ahead_room = 32u << 20; // and all of them
constexpr uint32_t decode_ahead_least = 1u << 15;      // bytes of entries below which nobody is hired

struct decode_ahead; // the entries, the workers, and how far they are

// So many workers as this process may use cores beside its own.
uint32_t decode_worker_count();

// Begins to unpack what the document below `root` names, with at most `workers` of them. Null: nothing is worth it.
decode_ahead* decode_ahead_begin(const xml_node* root, const pack_file* pack, uint32_t workers);

// Stops the workers and frees what nobody asked for. Never waits for a decoder: a worker that is inside one is left
// behind there, uses neither pack nor elements any more, and frees what it has when it comes out, or ends with the
// process.
struct end_decode_ahead {
    void operator()(decode_ahead* ahead) const;
};
using owned_decode_ahead = std::unique_ptr<decode_ahead, end_decode_ahead>;

// ---- asking, in the order of the document ---------------------------------------------
//
// Records count from 1 within their section. True: the result is the caller's to free. False: the caller unpacks the
// entry itself. A null `ahead` has nothing. Waits for a worker that is at it, and unpacks later entries meanwhile.

struct unpacked_mesh {
    uint8_t* bytes; // as xmlz_inflate hands them out
    uint32_t size;
};
bool take_mesh_ahead(decode_ahead* ahead, uint32_t record, unpacked_mesh& mesh);

struct unpacked_picture {
    decoded_image image;
    uint8_t*
        levels[2]; // ready-made mipmap levels 1 and 2, of the right size and with the picture's components; or null
};
bool take_picture_ahead(decode_ahead* ahead, uint32_t record, unpacked_picture& picture);

bool take_face_ahead(decode_ahead* ahead, uint32_t record, uint32_t face, decoded_image& image);
