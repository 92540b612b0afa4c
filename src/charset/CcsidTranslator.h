// One translation of a text that arrives in slices.
#pragma once

#include "src/charset/CcsidLayout.h"
#include "src/charset/CcsidSets.h"

#include <optional>
#include <vector>

namespace vnbytstr::detail {

class CcsidTranslator {
public:
    enum class Status {
        Done,       ///< all input taken; after the last slice, all output delivered too
        OutputFull, ///< call again with the rest of the input, if any, and more room
        Failed      ///< stopped at a character that cannot be translated
    };

    /// `pair` as FindCcsidPair found it; a null `layout` changes none. `stop`: fail instead of
    /// substituting.
    CcsidTranslator(const CcsidPair& pair, const SCCSIDLayout* layout, bool stop);
    CcsidTranslator(const CcsidTranslator&) = delete;
    CcsidTranslator& operator=(const CcsidTranslator&) = delete;

    /// Translates the next slice. `consumed` and `produced` are the bytes taken and delivered by
    /// this call. `last` says that the text ends with this slice; a call after that has returned
    /// Done begins a new text.
    Status Translate(std::span<const BYTE> in, std::span<BYTE> out, bool last,
                     std::size_t& consumed, std::size_t& produced);

    const STranslationReport& GetReport() const noexcept { return m_report; }

private:
    static constexpr std::size_t kPivot = 1024; // units of UTF-16 between the two converters
    enum class Stage { Running, DecoderFlushed, Flushed };

    struct Callbacks;

    void Restart();
    void Open();
    bool IsIdle() const;
    void RunKernel(std::span<const BYTE> in, std::span<BYTE> out, std::size_t& consumed,
                   std::size_t& produced);
    std::size_t PieceSize(std::size_t available) const;
    Status Flush(std::span<BYTE> out, std::size_t& produced);
    void Decode(std::span<const BYTE> in, bool flush, std::size_t& consumed);
    Status Drain(std::span<BYTE> out, std::size_t& produced);
    Status Encode(const char16_t*& next, const char16_t* end, bool flush, std::span<BYTE> out,
                  std::size_t& produced);
    ULONGLONG PositionOf(std::ptrdiff_t unit) const;
    bool StandsForMalformed(std::ptrdiff_t unit) const;
    void CheckInvariants() const;

    const CcsidPair& m_pair;
    const bool m_stop;
    std::optional<BidiParagraphs> m_layout;
    STranslationReport m_report;
    Stage m_stage = Stage::Running;
    bool m_failed = false;
    // The decoder failed, but the text before that place is still to be encoded.
    bool m_decoderStopped = false;
    // Bytes that ICU gets at a time where a kernel does the rest.
    std::size_t m_piece;

    std::optional<ConverterPool::Lease> m_decoder, m_encoder; // from their first use on
    bool m_decoderHolds = false; // the decoder has units that did not fit the pivot
    bool m_encoderHolds = false; // the encoder has bytes that did not fit the output

    // The pivot, and where its units came from.
    std::array<char16_t, kPivot> m_pivot;
    // The offset from m_decodeStart of each unit's first byte, -1 for one before it.
    std::array<int, kPivot> m_offsets;
    // What is left to encode, in the pivot or in the paragraph that is ready.
    const char16_t* m_next = nullptr;
    const char16_t* m_end = nullptr;
    const char16_t* m_readyNext = nullptr;
    ULONGLONG m_decodeStart = 0;            // position of the first byte decoded into the pivot
    ULONGLONG m_pendingStart = 0;           // position of the character that began before it
    ULONGLONG m_malformedEnd = 0;           // where the last broken sequence ended
    ULONGLONG m_lastUnit = 0;               // position of the last unit of the pivot before
    std::vector<std::ptrdiff_t> m_replaced; // units of the pivot that stand for malformed input

    // While Decode runs: the bytes it was given, and how far ICU got in them when it last said so.
    const char* m_decodeBegin = nullptr;
    const char* m_decodeEnd = nullptr;
    const char* m_decodeReal = nullptr;
    // While Encode runs: the units it was given.
    const char16_t* m_encodeBegin = nullptr;
    const char16_t* m_encodeEnd = nullptr;
};

} // namespace vnbytstr::detail
