#include "TerminalEmulator/Engine/History.h"

#include <algorithm>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vt
{

namespace
{

constexpr size_t ChunkRows = 256;
constexpr size_t ChunkBytes = 512 * 1024;
constexpr size_t ChunkStyles = 0x7fff;

// A row in a chunk: this header, the characters, the runs (style, cells: two bytes each), the clusters (count, then
// four bytes a code point).
struct Header {
    uint8_t flags;  ///< Row::Flag without Dirty
    uint8_t layout; ///< bits 0-1 bytes a character: 0 one, 1 two, 2 four; bits 2-3 LineSize
    uint16_t length;
    uint16_t runs;
};

constexpr size_t HeaderSize = 6;
constexpr uint16_t TailUnit = 0xd800; ///< a surrogate, which no cell holds, is the second column of a wide one

void put16(uint8_t *&at, uint32_t value)
{
    const auto narrow = static_cast<uint16_t>(value);
    std::memcpy(at, &narrow, 2);
    at += 2;
}

uint16_t take16(const uint8_t *&at)
{
    uint16_t value;
    std::memcpy(&value, at, 2);
    at += 2;
    return value;
}

uint32_t take32(const uint8_t *&at)
{
    uint32_t value;
    std::memcpy(&value, at, 4);
    at += 4;
    return value;
}

/// The smallest layout that holds characters with these codes.
uint8_t layoutFor(uint32_t codes)
{
    return codes < 0x100 ? 0 : (codes & Cell::Cluster) == 0 && (codes & Cell::CodePoint) <= 0xffff ? 1 : 2;
}

#if defined(__SSE2__)
template<int Bytes>
void storeFour(__m128i code, uint8_t *out)
{
    if constexpr (Bytes == 1) {
        const __m128i words = _mm_packs_epi32(code, code);
        const int bytes = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
        std::memcpy(out, &bytes, 4);
    } else if constexpr (Bytes == 2) {
        static_assert(Cell::Tail == 1u << 23);
        const __m128i tails = _mm_srai_epi32(_mm_slli_epi32(code, 8), 31);
        const __m128i marked = _mm_or_si128(code, _mm_and_si128(tails, _mm_set1_epi32(TailUnit)));
        // Packing saturates signed numbers: the low halves, spread over their words, are such.
        const __m128i units = _mm_srai_epi32(_mm_slli_epi32(marked, 16), 16);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(out), _mm_packs_epi32(units, units));
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out), code);
    }
}
#endif

} // namespace

void History::Buffer::ensure(size_t room)
{
    if (used + room <= capacity) {
        return;
    }
    const size_t larger = used == 0 ? room : std::max(used + room, capacity * 2);
    auto moved = std::make_unique_for_overwrite<uint8_t[]>(larger);
    if (used > 0) {
        std::memcpy(moved.get(), data.get(), used);
    }
    data = std::move(moved);
    capacity = larger;
}

History::History(size_t limit, Styles &styles, Clusters &clusters)
    : m_limit(limit)
    , m_styles(styles)
    , m_clusters(clusters)
{
}

void History::setLimit(size_t limit)
{
    m_limit = limit;
    while (m_size > m_limit) {
        ++m_dropped;
        --m_size;
        if (m_chunks.front().firstIndex + m_chunks.front().offsets.size() <= m_dropped) {
            m_chunks.pop_front();
            m_isOpen = m_isOpen && !m_chunks.empty();
        }
    }
}

void History::clear()
{
    m_chunks.clear();
    m_dropped += m_size;
    m_size = 0;
    m_isOpen = false;
}

void History::stylesRenamed()
{
    ++m_serial;
}

bool History::push(const Row &row)
{
    if (m_limit == 0) {
        return true;
    }
    append(row.cells, row.length, row.flags, row.size);
    if (m_size <= m_limit) {
        return false;
    }
    setLimit(m_limit);
    return true;
}

void History::pushUnlimited(const RowCopy &row)
{
    append(row.cells.data(), row.cells.size(), row.flags, row.size);
}

void History::swapRows(History &other)
{
    std::swap(m_size, other.m_size);
    std::swap(m_dropped, other.m_dropped);
    std::swap(m_chunks, other.m_chunks);
    std::swap(m_isOpen, other.m_isOpen);
    ++m_serial;
    ++other.m_serial;
    if (m_isOpen) {
        sealChunk(); // what it knows of styles by number is the other's
    }
    other.m_isOpen = false;
}

void History::openChunk()
{
    Chunk chunk;
    chunk.firstIndex = m_dropped + m_size;
    chunk.bytes = std::exchange(m_staging, {});
    chunk.bytes.used = 0;
    chunk.offsets.reserve(ChunkRows);
    m_chunks.push_back(std::move(chunk));
    m_isOpen = true;
    ++m_serial;
}

void History::sealChunk()
{
    Chunk &chunk = m_chunks.back();
    Buffer exact;
    exact.ensure(chunk.bytes.used);
    std::memcpy(exact.data.get(), chunk.bytes.data.get(), chunk.bytes.used);
    exact.used = chunk.bytes.used;
    m_staging = std::move(chunk.bytes);
    chunk.bytes = std::move(exact);
    chunk.styles.shrink_to_fit();
    m_isOpen = false;
}

uint16_t History::localStyle(Chunk &chunk, StyleId id)
{
    if (id >= m_local.size()) {
        m_local.resize(std::max<size_t>(m_styles.size(), id + 1));
    }
    LocalStyle &known = m_local[id];
    if (known.serial != m_serial) {
        known.serial = m_serial;
        known.number = static_cast<uint16_t>(chunk.styles.size());
        chunk.styles.push_back(m_styles[id]);
    }
    return known.number;
}

/// Writes the codes, `Bytes` each, and collects the runs of styles in the same pass. Returns the OR of all codes,
/// which tells whether that many bytes were enough.
template<int Bytes>
uint32_t History::encode(const Cell *cells, size_t length, uint8_t *out, size_t &runs)
{
    uint32_t codes = 0;
    size_t x = 0;
    size_t begin = 0;
    runs = 0;
    StyleId style = length > 0 ? cells[0].style : 0;
    const auto closeRun = [&](size_t end) {
        m_runs[2 * runs] = style;
        m_runs[2 * runs + 1] = static_cast<uint32_t>(end - begin);
        ++runs;
        begin = end;
    };
#if defined(__SSE2__)
    __m128i every = _mm_setzero_si128();
    for (; x + 4 <= length; x += 4) {
        const __m128 low = _mm_loadu_ps(reinterpret_cast<const float *>(cells + x));
        const __m128 high = _mm_loadu_ps(reinterpret_cast<const float *>(cells + x + 2));
        const __m128i code = _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
        const __m128i styles = _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
        every = _mm_or_si128(every, code);
        storeFour<Bytes>(code, out + x * Bytes);
        const __m128i same = _mm_cmpeq_epi32(styles, _mm_set1_epi32(static_cast<int>(style)));
        if (_mm_movemask_epi8(same) != 0xffff) {
            for (size_t each = x; each < x + 4; ++each) {
                if (cells[each].style != style) {
                    if (each > begin) {
                        closeRun(each);
                    }
                    style = cells[each].style;
                }
            }
        }
    }
    alignas(16) uint32_t lanes[4];
    _mm_store_si128(reinterpret_cast<__m128i *>(lanes), every);
    codes = lanes[0] | lanes[1] | lanes[2] | lanes[3];
#endif
    for (; x < length; ++x) {
        codes |= cells[x].code;
        const uint32_t unit = Bytes == 2 && cells[x].isTail() ? TailUnit : cells[x].code;
        std::memcpy(out + x * Bytes, &unit, Bytes); // little-endian, as everything here
        if (cells[x].style != style) {
            if (x > begin) {
                closeRun(x);
            }
            style = cells[x].style;
        }
    }
    if (length > begin) {
        closeRun(length);
    }
    return codes;
}

void History::appendClusters(Buffer &bytes, const Cell *cells, size_t length) const
{
    char32_t points[Clusters::MaxLength];
    for (size_t x = 0; x < length; ++x) {
        if (!cells[x].isCluster()) {
            continue;
        }
        const int count = m_clusters.expand(cells[x].code, points);
        const size_t size = 4 * static_cast<size_t>(count);
        bytes.ensure(size + 1);
        bytes.data[bytes.used] = static_cast<uint8_t>(count);
        std::memcpy(bytes.data.get() + bytes.used + 1, points, size);
        bytes.used += size + 1;
    }
}

void History::append(const Cell *cells, size_t length, uint8_t flags, LineSize size)
{
    if (m_isOpen) {
        const Chunk &last = m_chunks.back();
        if (last.offsets.size() >= ChunkRows || last.bytes.used > ChunkBytes ||
            last.styles.size() + length > ChunkStyles) {
            sealChunk();
        }
    }
    if (!m_isOpen) {
        openChunk();
    }
    Chunk &chunk = m_chunks.back();
    const size_t offset = chunk.bytes.used;
    m_runs.resize(std::max(m_runs.size(), 2 * length + 2));
    // Worst case: four bytes a character and a run for each cell; clusters come on top below.
    chunk.bytes.ensure(HeaderSize + length * 8 + 16);
    uint8_t *const start = chunk.bytes.data.get() + offset;
    uint8_t *at = start + HeaderSize;

    size_t runs = 0;
    const auto encodeAs = [&](uint8_t layout) {
        return layout == 0   ? encode<1>(cells, length, at, runs)
               : layout == 1 ? encode<2>(cells, length, at, runs)
                             : encode<4>(cells, length, at, runs);
    };
    // Most rows are like the one before.
    const uint32_t codes = encodeAs(m_layout);
    if (const uint8_t fitting = layoutFor(codes); fitting != m_layout) {
        m_layout = fitting;
        encodeAs(fitting);
    }
    at += length << m_layout;
    for (size_t run = 0; run < runs; ++run) {
        put16(at, localStyle(chunk, m_runs[2 * run]));
        put16(at, m_runs[2 * run + 1]);
    }
    const Header header{static_cast<uint8_t>(flags & ~Row::Dirty),
                        static_cast<uint8_t>(m_layout | static_cast<unsigned>(size) << 2),
                        static_cast<uint16_t>(length), static_cast<uint16_t>(runs)};
    std::memcpy(start, &header, HeaderSize);
    chunk.bytes.used = static_cast<size_t>(at - chunk.bytes.data.get());
    if ((codes & Cell::Cluster) != 0) {
        appendClusters(chunk.bytes, cells, length);
    }
    chunk.offsets.push_back(static_cast<uint32_t>(offset));
    ++m_size;
}

const History::Chunk &History::chunkOf(size_t absolute) const
{
    const auto after = std::upper_bound(m_chunks.begin(), m_chunks.end(), absolute,
                                        [](size_t value, const Chunk &chunk) { return value < chunk.firstIndex; });
    return *(after - 1);
}

void History::read(size_t index, RowCopy &out) const
{
    const size_t absolute = m_dropped + index;
    const Chunk &chunk = chunkOf(absolute);
    const uint8_t *at = chunk.bytes.data.get() + chunk.offsets[absolute - chunk.firstIndex];
    Header header;
    std::memcpy(&header, at, HeaderSize);
    at += HeaderSize;
    out.flags = header.flags;
    out.size = static_cast<LineSize>(header.layout >> 2 & 3);
    out.cells.resize(header.length);
    bool clusters = false;
    for (size_t x = 0; x < header.length; ++x) {
        Cell &cell = out.cells[x];
        switch (header.layout & 3) {
        case 0:
            cell.code = *at++;
            break;
        case 1:
            cell.code = take16(at);
            if (cell.code == TailUnit) {
                cell.code = Cell::Tail;
                if (x > 0) {
                    out.cells[x - 1].code |= Cell::Wide;
                }
            }
            break;
        default:
            cell.code = take32(at);
            clusters = clusters || cell.isCluster();
        }
    }
    size_t x = 0;
    for (int run = 0; run < header.runs; ++run) {
        const StyleId style = m_styles.intern(chunk.styles[take16(at)]);
        for (int left = take16(at); left > 0; --left) {
            out.cells[x++].style = style;
        }
    }
    for (size_t each = 0; clusters && each < header.length; ++each) {
        Cell &cell = out.cells[each];
        if (!cell.isCluster()) {
            continue;
        }
        const int count = *at++;
        uint32_t code = take32(at);
        for (int point = 1; point < count; ++point) {
            code = m_clusters.extend(code, take32(at));
        }
        cell.code = code | (cell.code & Cell::Wide);
    }
}

void History::popNewest()
{
    Chunk &chunk = m_chunks.back();
    chunk.bytes.used = chunk.offsets.back();
    chunk.offsets.pop_back();
    --m_size;
    if (chunk.offsets.empty() || m_size == 0) {
        m_chunks.pop_back();
        m_isOpen = false;
    }
}

size_t History::bytes() const
{
    size_t total = m_staging.capacity + m_local.capacity() * sizeof(LocalStyle) + m_runs.capacity() * 4;
    for (const Chunk &chunk : m_chunks) {
        total += sizeof(Chunk) + chunk.bytes.capacity + chunk.offsets.capacity() * 4 +
                 chunk.styles.capacity() * sizeof(Style);
    }
    return total;
}

} // namespace vt
