#include "media/LZWEncoder.h"

#include <array>

namespace morvelin {

namespace {

constexpr int kMostBits = 12;
constexpr std::uint32_t kLastCode = (1U << kMostBits) - 1;
constexpr std::size_t kBlock = 255;

/// Codes as a stream of bits, lowest first, cut into blocks that begin with their length.
class CodeStream {
public:
    explicit CodeStream(std::vector<std::uint8_t>& file) : m_file(file) { beginBlock(); }

    void put(std::uint32_t code, int bits) {
        m_pending |= code << m_pendingBits;
        m_pendingBits += bits;
        for (; m_pendingBits >= 8; m_pendingBits -= 8) putByte();
    }

    void finish() {
        if (m_pendingBits > 0) putByte();
        closeBlock();
        // An empty block ends the image.
        if (m_file.size() > m_block + 1) m_file.push_back(0);
    }

private:
    void putByte() {
        if (m_file.size() - m_block > kBlock) {
            closeBlock();
            beginBlock();
        }
        m_file.push_back(static_cast<std::uint8_t>(m_pending));
        m_pending >>= 8;
    }
    void beginBlock() {
        m_block = m_file.size();
        m_file.push_back(0);
    }
    void closeBlock() { m_file[m_block] = static_cast<std::uint8_t>(m_file.size() - m_block - 1); }

    std::vector<std::uint8_t>& m_file;
    std::size_t m_block = 0; ///< where the open block's length stands
    std::uint32_t m_pending = 0;
    int m_pendingBits = 0;
};

/// The strings met so far: a known string and one more number, to their code. Open addressing; it is cleared so often
/// that it has to fit the nearest cache.
class StringTable {
public:
    StringTable() { clear(); }

    void clear() { m_entries.fill(kFree); }

    /// The code, or 0 for a string that is new; it then gets `newCode`.
    std::uint32_t findOrAdd(std::uint32_t prefix, std::uint8_t number, std::uint32_t newCode) {
        const std::uint32_t key = prefix << 8 | number;
        for (std::uint32_t slot = key * 0x9E3779B1U >> kShift;; slot = (slot + 1) & kMask) {
            const std::uint32_t entry = m_entries[slot];
            if (entry == kFree) {
                m_entries[slot] = key << kMostBits | newCode;
                return 0;
            }
            if (entry >> kMostBits == key) return entry & kLastCode;
        }
    }

private:
    static constexpr int kShift = 19;
    static constexpr std::uint32_t kMask = (1U << (32 - kShift)) - 1;
    static constexpr std::uint32_t kFree = 0; ///< a code is never 0

    std::array<std::uint32_t, kMask + 1> m_entries;
};

} // namespace

void appendLZW(PlaneView<const std::uint8_t> numbers, int bits, std::vector<std::uint8_t>& file) {
    file.push_back(static_cast<std::uint8_t>(bits));
    const std::uint32_t clear = 1U << bits;
    CodeStream codes(file);
    StringTable strings;
    int codeBits = bits + 1;
    std::uint32_t lastCode = clear + 1;
    codes.put(clear, codeBits);

    std::uint32_t prefix = numbers.row(0)[0];
    for (int y = 0; y < numbers.height; ++y) {
        const std::uint8_t* row = numbers.row(y);
        for (int x = y == 0 ? 1 : 0; x < numbers.width; ++x) {
            if (const std::uint32_t known = strings.findOrAdd(prefix, row[x], lastCode + 1)) {
                prefix = known;
                continue;
            }
            codes.put(prefix, codeBits);
            prefix = row[x];
            ++lastCode;
            if (lastCode >> codeBits != 0 && codeBits < kMostBits) ++codeBits;
            if (lastCode == kLastCode) {
                codes.put(clear, codeBits);
                strings.clear();
                codeBits = bits + 1;
                lastCode = clear + 1;
            }
        }
    }
    codes.put(prefix, codeBits);
    // The reader adds a string for that code too, and may then expect longer ones.
    if ((lastCode + 1) >> codeBits != 0 && codeBits < kMostBits) ++codeBits;
    codes.put(clear + 1, codeBits);
    codes.finish();
}

} // namespace morvelin
