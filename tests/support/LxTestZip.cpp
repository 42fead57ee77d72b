#include "support/LxTestZip.h"

#include <zlib.h>

namespace
{
void Put16(std::string& s, unsigned v)
{
    s += char(v & 0xFF);
    s += char((v >> 8) & 0xFF);
}
void Put32(std::string& s, unsigned long v)
{
    Put16(s, unsigned(v & 0xFFFF));
    Put16(s, unsigned((v >> 16) & 0xFFFF));
}

std::string RawDeflate(const std::string& data)
{
    z_stream z{};
    deflateInit2(&z, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&z, static_cast<uLong>(data.size())) + 16, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(out.size());
    deflate(&z, Z_FINISH);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}
} // namespace

std::string LxTest::BuildZip(const std::vector<ZipEntry>& entries)
{
    const unsigned dosTime = (12u << 11) | (30u << 5); // 12:30:00
    const unsigned dosDate = ((2024u - 1980u) << 9) | (5u << 5) | 17u;
    std::string zip, central;
    for (const ZipEntry& e : entries)
    {
        const std::string body = e.deflate && e.method < 0 ? RawDeflate(e.data) : e.data;
        unsigned long crc = crc32(0L, reinterpret_cast<const Bytef*>(e.data.data()), static_cast<uInt>(e.data.size()));
        if (e.corruptCrc)
            crc ^= 0x5A5A5A5Aul;
        const unsigned long csize =
            e.declaredCompressed >= 0 ? static_cast<unsigned long>(e.declaredCompressed) : body.size();
        const unsigned long usize =
            e.declaredUncompressed >= 0 ? static_cast<unsigned long>(e.declaredUncompressed) : e.data.size();
        const unsigned method = e.method >= 0 ? static_cast<unsigned>(e.method) : e.deflate ? 8u : 0u;
        const unsigned long offset = zip.size();

        // The fields a local header and its central directory entry share, from the version needed on.
        auto common = [&](std::string& out)
        {
            for (unsigned v : {20u, 0u, method, dosTime, dosDate})
                Put16(out, v);
            for (unsigned long v : {crc, csize, usize})
                Put32(out, v);
            Put16(out, unsigned(e.name.size()));
            Put16(out, 0); // extra field length
        };
        Put32(zip, 0x04034b50ul);
        common(zip);
        zip += e.name;
        zip += body;

        Put32(central, 0x02014b50ul);
        Put16(central, 20); // version made by
        common(central);
        for (unsigned v : {0u, 0u, 0u}) // comment length, disk number, internal attributes
            Put16(central, v);
        Put32(central, 0); // external attributes
        Put32(central, offset);
        central += e.name;
    }
    const unsigned long centralOffset = zip.size();
    zip += central;
    Put32(zip, 0x06054b50ul);
    for (unsigned v : {0u, 0u, unsigned(entries.size()), unsigned(entries.size())})
        Put16(zip, v);
    Put32(zip, central.size());
    Put32(zip, centralOffset);
    Put16(zip, 0);
    return zip;
}
