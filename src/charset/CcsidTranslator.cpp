// Invariants, checked by CheckInvariants:
//   1. The pivot holds units only while something is left to encode: m_next <= m_end, both within
//      it.
//   2. With a layout, the pivot is empty between calls (its units have gone to the paragraphs).
//   3. A kernel runs only while neither converter holds anything: no part of a character, no unit,
//      no byte (IsIdle).
//   4. Every byte counted in m_report.ullConsumed is in the output, in the pivot, in a paragraph or
//      in a converter's state; every byte counted in ullProduced has been delivered.
#include "src/charset/CcsidTranslator.h"

#include <unicode/ucnv_err.h>

#include <algorithm>
#include <cassert>
#include <new>

namespace vnbytstr::detail {

namespace {
constexpr std::size_t kMinPiece = 8, kMaxPiece = 4096;
/// Bytes a kernel must translate for ICU's pieces to stay small.
constexpr std::size_t kWorthwhile = 256;
/// ICU counts in signed 32 bits.
constexpr std::size_t kMaxSlice = 1u << 30;

/// Bytes of a set's units, at whose multiples its characters begin.
unsigned UnitOf(WORD ccsid) {
    constexpr WORD kUtf16[] = {1200, 1202, 1204, 13488, 17584};
    return std::find(std::begin(kUtf16), std::end(kUtf16), ccsid) != std::end(kUtf16) ? 2 : 1;
}
} // namespace

/// What ICU calls when something cannot be converted: counts it, notes where it was, and stops or
/// leaves the replacing to ICU's own callback.
struct CcsidTranslator::Callbacks {
    static void U_CALLCONV Malformed(const void* context, UConverterToUnicodeArgs* args,
                                     const char* bytes, int32_t length,
                                     UConverterCallbackReason reason, UErrorCode* error) {
        if (reason > UCNV_IRREGULAR)
            return; // a reset or a close, perhaps long after this translation
        auto& self = *static_cast<CcsidTranslator*>(const_cast<void*>(context));
        // After a broken sequence ICU may go back and read from its internal buffer.
        std::ptrdiff_t unread = 0;
        if (args->source >= self.m_decodeBegin && args->source <= self.m_decodeEnd)
            self.m_decodeReal = args->source;
        else
            unread = args->sourceLimit - args->source;
        UErrorCode ignored = U_ZERO_ERROR;
        unread += ucnv_toUCountPending(args->converter, &ignored) + length;
        ULONGLONG position =
            self.m_decodeStart +
            static_cast<ULONGLONG>(self.m_decodeReal - self.m_decodeBegin - unread);
        // When a slice ends within a unit ICU keeps the unit's first byte out of reach.
        position -= position % UnitOf(self.m_pair.fromCcsid);
        self.m_malformedEnd = position + static_cast<ULONGLONG>(length);
        STranslationReport& report = self.m_report;
        if (report.ullMalformed++ == 0)
            report.ullFirstMalformed = position;
        if (self.m_stop)
            return;
        if (args->target >= self.m_pivot.data() && args->target <= self.m_pivot.data() + kPivot)
            self.m_replaced.push_back(args->target - self.m_pivot.data());
        UCNV_TO_U_CALLBACK_SUBSTITUTE(nullptr, args, bytes, length, reason, error);
    }

    static void U_CALLCONV Untranslatable(const void* context, UConverterFromUnicodeArgs* args,
                                          const char16_t* units, int32_t length, UChar32 character,
                                          UConverterCallbackReason reason, UErrorCode* error) {
        if (reason > UCNV_IRREGULAR)
            return;
        auto& self = *static_cast<CcsidTranslator*>(const_cast<void*>(context));
        std::ptrdiff_t unit = -1; // in a buffer of ICU's own: it came with an earlier pivot
        if (args->source >= self.m_encodeBegin && args->source <= self.m_encodeEnd)
            unit =
                args->source - (self.m_layout ? self.m_encodeBegin : self.m_pivot.data()) - length;
        if (character != 0xFFFD || !self.StandsForMalformed(unit)) {
            STranslationReport& report = self.m_report;
            if (report.ullUntranslatable++ == 0)
                report.ullFirstUntranslatable = self.PositionOf(unit);
            if (self.m_stop)
                return;
        }
        UCNV_FROM_U_CALLBACK_SUBSTITUTE(nullptr, args, units, length, character, reason, error);
    }
};

CcsidTranslator::CcsidTranslator(const CcsidPair& pair, const SCCSIDLayout* layout, bool stop)
    : m_pair(pair), m_stop(stop), m_piece(kMinPiece) {
    if (layout && ChangesLayout(*layout)) {
        m_layout.emplace(*layout);
        m_readyNext = m_layout->Ready().data();
    }
}

void CcsidTranslator::Restart() {
    m_report = {};
    m_stage = Stage::Running;
    m_piece = kMinPiece;
    m_pendingStart = m_lastUnit = 0;
    if (m_decoder) {
        ucnv_reset(m_decoder->get());
        ucnv_reset(m_encoder->get());
    }
    if (m_layout) {
        m_layout->Clear();
        m_readyNext = m_layout->Ready().data();
    }
}

void CcsidTranslator::Open() {
    if (m_decoder)
        return;
    m_decoder.emplace(m_pair.from->Borrow());
    m_encoder.emplace(m_pair.to->Borrow());
    if (!m_decoder->get() || !m_encoder->get())
        throw std::bad_alloc(); // the pair was found, so ICU has them
    UErrorCode error = U_ZERO_ERROR;
    ucnv_setToUCallBack(m_decoder->get(), Callbacks::Malformed, this, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(m_encoder->get(), Callbacks::Untranslatable, this, nullptr, nullptr,
                          &error);
    m_next = m_end = m_pivot.data();
}

bool CcsidTranslator::IsIdle() const {
    if (!m_decoder)
        return true;
    UErrorCode error = U_ZERO_ERROR;
    return m_next == m_end && !m_decoderHolds && !m_encoderHolds &&
           ucnv_toUCountPending(m_decoder->get(), &error) == 0 &&
           ucnv_fromUCountPending(m_encoder->get(), &error) == 0;
}

void CcsidTranslator::CheckInvariants() const {
    if (!m_decoder)
        return;
    assert(m_next <= m_end && m_next >= m_pivot.data() && m_end <= m_pivot.data() + kPivot);
    assert(!m_layout || m_next == m_end);
}

CcsidTranslator::Status CcsidTranslator::Translate(std::span<const BYTE> in, std::span<BYTE> out,
                                                   bool last, std::size_t& consumed,
                                                   std::size_t& produced) {
    consumed = produced = 0;
    if (m_stage == Stage::Flushed)
        Restart();
    const bool useKernel = m_pair.kernel && !m_layout;
    for (;;) {
        CheckInvariants();
        if (const Status status = Drain(out, produced); status != Status::Done)
            return status;
        if (useKernel && IsIdle())
            RunKernel(in, out, consumed, produced);
        if (m_decoderHolds) {
            Decode({}, m_stage != Stage::Running, consumed);
        } else if (consumed < in.size()) {
            if (produced == out.size())
                return Status::OutputFull;
            Decode(in.subspan(consumed, PieceSize(in.size() - consumed)), false, consumed);
        } else if (!last) {
            return Status::Done;
        } else if (m_stage == Stage::Running && m_decoder) {
            m_stage = Stage::DecoderFlushed;
            Decode({}, true, consumed);
        } else {
            return Flush(out, produced);
        }
    }
}

void CcsidTranslator::RunKernel(std::span<const BYTE> in, std::span<BYTE> out,
                                std::size_t& consumed, std::size_t& produced) {
    const KernelStep step = m_pair.kernel->Run(in.subspan(consumed), out.subspan(produced));
    consumed += step.consumed;
    produced += step.produced;
    m_report.ullConsumed += step.consumed;
    m_report.ullProduced += step.produced;
    // Text full of what a kernel does not know goes to ICU in larger and larger pieces.
    m_piece = step.consumed >= kWorthwhile ? kMinPiece : std::min(m_piece * 2, kMaxPiece);
}

std::size_t CcsidTranslator::PieceSize(std::size_t available) const {
    // In the middle of a character: byte by byte to its end. After it a kernel can go on, and the
    // offsets are right (ICU's for UTF-32 are not, in a piece that begins in the middle of one).
    UErrorCode error = U_ZERO_ERROR;
    if (m_decoder && ucnv_toUCountPending(m_decoder->get(), &error) != 0)
        return 1;
    return std::min(available, m_pair.kernel && !m_layout ? m_piece : kMaxSlice);
}

void CcsidTranslator::Decode(std::span<const BYTE> in, bool flush, std::size_t& consumed) {
    Open();
    assert(m_next == m_end);
    UErrorCode error = U_ZERO_ERROR;
    const auto held = static_cast<ULONGLONG>(ucnv_toUCountPending(m_decoder->get(), &error));
    m_pendingStart = m_decoderHolds ? m_lastUnit : m_report.ullConsumed - held;
    m_decodeStart = m_report.ullConsumed;
    m_decodeBegin = reinterpret_cast<const char*>(in.data());
    m_decodeEnd = m_decodeBegin + in.size();
    m_decodeReal = m_decodeBegin;
    // What did not fit the pivot before comes first now.
    const bool replacedIsHeld =
        m_decoderHolds && !m_replaced.empty() && m_replaced.back() == kPivot;
    m_replaced.clear();
    if (replacedIsHeld)
        m_replaced.push_back(0);
    const bool wantOffsets = m_report.ullUntranslatable == 0;
    const char* source = m_decodeBegin;
    char16_t* target = m_pivot.data();
    error = U_ZERO_ERROR;
    ucnv_toUnicode(m_decoder->get(), &target, m_pivot.data() + kPivot, &source, m_decodeEnd,
                   wantOffsets ? m_offsets.data() : nullptr, flush, &error);
    m_next = m_pivot.data();
    m_end = target;
    const auto taken = static_cast<std::size_t>(source - m_decodeBegin);
    consumed += taken;
    m_report.ullConsumed += taken;
    m_decoderHolds = error == U_BUFFER_OVERFLOW_ERROR;
    if (U_FAILURE(error) && !m_decoderHolds) {
        if (!m_stop)
            throw std::bad_alloc(); // ICU has no other reason left
        m_decoderStopped = true;
    }
    if (m_layout) {
        for (; m_next < m_end; ++m_next) {
            if (wantOffsets)
                m_lastUnit = PositionOf(m_next - m_pivot.data());
            m_layout->Append(*m_next, m_lastUnit);
        }
    }
}

ULONGLONG CcsidTranslator::PositionOf(std::ptrdiff_t unit) const {
    if (m_layout && m_encodeBegin)
        return m_layout->ReadyPosition();
    if (unit < 0)
        return m_lastUnit;
    // ICU's converters differ in what they report of a character that began in an earlier slice.
    const bool isFirst = unit == 0 || (unit == 1 && U16_IS_LEAD(m_pivot[0]));
    int offset = m_offsets[static_cast<std::size_t>(unit)];
    if (offset >= m_decodeEnd - m_decodeBegin) // what ICU says of some bytes that it reads again
        offset = -1;
    // What a broken sequence held back may have come in an earlier slice, too: single bytes, and
    // then a character.
    if (offset < 0 && !m_replaced.empty() && unit > m_replaced.back())
        return m_malformedEnd + static_cast<ULONGLONG>(unit - m_replaced.back() - 1);
    return offset < 0 || (isFirst && m_pendingStart < m_decodeStart)
               ? m_pendingStart
               : m_decodeStart + static_cast<ULONGLONG>(offset);
}

bool CcsidTranslator::StandsForMalformed(std::ptrdiff_t unit) const {
    return m_layout ? m_report.ullMalformed != 0
                    : std::binary_search(m_replaced.begin(), m_replaced.end(), unit);
}

CcsidTranslator::Status CcsidTranslator::Encode(const char16_t*& next, const char16_t* end,
                                                bool flush, std::span<BYTE> out,
                                                std::size_t& produced) {
    m_encodeBegin = next;
    m_encodeEnd = end;
    char* const begin = reinterpret_cast<char*>(out.data());
    char* target = begin + produced;
    UErrorCode error = U_ZERO_ERROR;
    ucnv_fromUnicode(m_encoder->get(), &target, begin + out.size(), &next, end, nullptr, flush,
                     &error);
    m_encodeBegin = m_encodeEnd = nullptr;
    const auto written = static_cast<std::size_t>(target - begin) - produced;
    produced += written;
    m_report.ullProduced += written;
    m_encoderHolds = error == U_BUFFER_OVERFLOW_ERROR;
    if (m_encoderHolds)
        return Status::OutputFull;
    if (U_FAILURE(error)) {
        if (!m_stop)
            throw std::bad_alloc();
        m_failed = true;
        // What the decoder found malformed lies after this place, which is not reached yet.
        m_report.ullMalformed = 0;
        m_report.ullFirstMalformed = STranslationReport::nowhere;
        return Status::Failed;
    }
    return Status::Done;
}

CcsidTranslator::Status CcsidTranslator::Drain(std::span<BYTE> out, std::size_t& produced) {
    if (m_failed)
        return Status::Failed;
    if (!m_decoder)
        return Status::Done;
    if (m_layout) {
        for (;;) {
            const std::u16string_view ready = m_layout->Ready();
            const char16_t* const end = ready.data() + ready.size();
            if (m_encoderHolds || m_readyNext != end) {
                if (const Status status = Encode(m_readyNext, end, false, out, produced);
                    status != Status::Done)
                    return status;
            }
            const bool all = m_decoderStopped || (m_stage != Stage::Running && !m_decoderHolds);
            const bool more = m_layout->Next(all);
            m_readyNext = m_layout->Ready().data();
            if (!more)
                break;
        }
    } else if (m_encoderHolds || m_next != m_end) {
        if (const Status status = Encode(m_next, m_end, false, out, produced);
            status != Status::Done)
            return status;
        if (m_end != m_pivot.data() && m_report.ullUntranslatable == 0)
            m_lastUnit = PositionOf(m_end - m_pivot.data() - 1);
    }
    if (m_decoderStopped) {
        m_failed = true;
        return Status::Failed;
    }
    return Status::Done;
}

CcsidTranslator::Status CcsidTranslator::Flush(std::span<BYTE> out, std::size_t& produced) {
    if (m_decoder) { // the last shift-in
        const char16_t* none = m_pivot.data();
        if (const Status status = Encode(none, none, true, out, produced); status != Status::Done)
            return status;
    }
    m_stage = Stage::Flushed;
    return Status::Done;
}

} // namespace vnbytstr::detail
