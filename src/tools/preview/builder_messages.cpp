#include "tools/preview/builder_messages.h"

#include "tools/preview/message_bytes.h"

static void put(std::vector<uint8_t>& out, const tried_value& tried)
{
    put(out, tried.file);
    put(out, tried.site, 4);
    put(out, tried.written);
    put(out, tried.value);
}

static void take(byte_reader& in, tried_value& tried)
{
    take(in, tried.file);
    take(in, tried.site);
    take(in, tried.written);
    take(in, tried.value);
}

std::vector<uint8_t> encode_order(const build_order& order)
{
    std::vector<uint8_t> out;
    put(out, order.number, 8);
    put(out, order.wish.folder);
    put(out, order.wish.file);
    put(out, order.wish.from_source, 1);
    put_list(out, order.wish.tries);
    return out;
}

std::optional<build_order> decode_order(std::span<const uint8_t> bytes)
{
    byte_reader in = {bytes};
    build_order order;
    order.number = take_number(in, 8);
    take(in, order.wish.folder);
    take(in, order.wish.file);
    take(in, order.wish.from_source);
    take_list(in, order.wish.tries);
    if (!in.good || !in.left.empty())
        return {};
    return order;
}
