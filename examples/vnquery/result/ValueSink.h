// Takes the values of a result one after the other, without anybody holding them in between.
#pragma once

#include "vnquery/result/Value.h"

#include <optional>
#include <string_view>

namespace vnquery {

class Progress;

/// A source gives each value by one call of Null, Integer or Whole, or in pieces: Begin, any number
/// of Append, End. What arrives is valid during the call only. The functions throw Interrupted on a
/// signal to end, and what the derived class throws.
class ValueSink {
public:
    /// Reports to `progress` unless that is null.
    explicit ValueSink(Progress* progress) : m_progress(progress) {}
    virtual ~ValueSink() = default;
    ValueSink(const ValueSink&) = delete;
    ValueSink& operator=(const ValueSink&) = delete;

    void Null() { DoNull(); }
    void Integer(long long number) { DoInteger(number); }
    /// A short value: its bytes as Value says for the type.
    void Whole(Value::Type type, std::string_view bytes) {
        m_bytes += bytes.size();
        DoWhole(type, bytes);
    }
    /// A value in pieces, of `announced` bytes if that is known. False when its bytes are not asked
    /// for: a source that knows the length then calls End without them.
    bool Begin(Value::Type type, std::optional<ULONGLONG> announced = {});
    void Append(const void* bytes, std::size_t count);
    /// Throws Failure when another number of bytes was announced than arrived.
    void End();

    /// Reports what arrived since the last call in one piece; pieces are reported at once.
    void ReportBytes();

protected:
    virtual void DoNull() = 0;
    /// By default the number's digits, as a whole value.
    virtual void DoInteger(long long number);
    virtual void DoWhole(Value::Type type, std::string_view bytes) = 0;
    virtual bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) = 0;
    /// At most kPieceSize bytes, only if DoBegin returned true.
    virtual void DoAppend(std::string_view piece) = 0;
    /// `length` is that of the value, also where its bytes were not asked for.
    virtual void DoEnd(ULONGLONG length) = 0;

    Progress* GetProgress() const { return m_progress; }

private:
    Progress* m_progress;
    ULONGLONG m_bytes = 0; ///< not yet reported
    ULONGLONG m_arrived = 0;
    std::optional<ULONGLONG> m_announced;
    bool m_isAsked = false;
};

/// Keeps the value that it takes.
class ValueKeeper : public ValueSink {
public:
    ValueKeeper(Value& value, Progress& progress) : ValueSink(&progress), m_value(value) {}

protected:
    void DoNull() override { m_value.Begin(Value::Type::Null); }
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;

private:
    Value& m_value;
};

} // namespace vnquery
