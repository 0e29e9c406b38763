#include "sound.h"

#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/vorbis_comments.h"

#define STB_VORBIS_HEADER_ONLY
#include <stb/stb_vorbis.h>

#include <cmath>

constexpr size_t block_pairs = 8192;

// A decoder that owns the file; null for what the player would play as silence.
static stb_vorbis* open_decoder(const std::string& path)
{
    owned_file file(open_plain_file(path.c_str()));
    int error = 0;
    if (!file || !vorbis_comments_fit(file.get()))
        return nullptr;
    return stb_vorbis_open_file(file.release(), 1, &error, nullptr); // closes the file when it fails, too
}

decoded_music decode_music(const std::string& path, double seconds, std::string& warning)
{
    decoded_music music;
    stb_vorbis* decoder = open_decoder(path);
    if (decoder == nullptr) {
        warning = path + " is no Ogg Vorbis file that can be decoded: the video has no sound";
        return music;
    }
    music.samples_per_second = stb_vorbis_get_info(decoder).sample_rate;
    const double wanted = std::ceil(seconds * music.samples_per_second) + 1;
    int decoded = 1;
    while (decoded > 0 && static_cast<double>(music.pairs.size() / 2) < wanted) {
        const size_t begin = music.pairs.size();
        music.pairs.resize(begin + block_pairs * 2);
        decoded = stb_vorbis_get_samples_short_interleaved(
            decoder, 2, music.pairs.data() + begin, static_cast<int>(block_pairs * 2));
        music.pairs.resize(begin + static_cast<size_t>(decoded > 0 ? decoded : 0) * 2);
    }
    stb_vorbis_close(decoder);
    return music;
}
