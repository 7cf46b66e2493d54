#pragma once

#include "util/KxHandle.h"
#include "util/KxString.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <string_view>

class KxInputStream;

/** An ordered list of name and value pairs, "name=value;name;name=value": the parameters of a URI or header.

    Names compare ignoring ASCII case and are written as first given. A repeated name keeps its place and takes the new
    value. A value may be empty; such a pair is written without "=". Values keep their quotes. The first pairs are in
    the object itself. A long list has an index, so that the cost of setting, finding and removing a name does not
    depend on the length of the list or on the order. While a thread changes a list, no other thread may use it. */
class KX_UTIL_API KxParameters final : public KxObject {
public:
    struct Pair {
        KxString name;
        KxString value;
    };

    /** Iterates over the pairs in insertion order. */
    class Iterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Pair;
        using difference_type = std::ptrdiff_t;
        using pointer = const Pair*;
        using reference = const Pair&;

        constexpr Iterator() = default;

        const Pair& operator*() const { return *m_pair; }
        const Pair* operator->() const { return m_pair; }
        Iterator& operator++() {
            ++m_pair;
            if (m_gap != nullptr) {
                const std::uint32_t gap = *++m_gap;
                m_pair += gap;
                m_gap += gap;
            }
            return *this;
        }
        Iterator& operator--() {
            --m_pair;
            if (m_gap != nullptr) {
                const std::uint32_t gap = *--m_gap;
                m_pair -= gap;
                m_gap -= gap;
            }
            return *this;
        }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        Iterator operator--(int) {
            const Iterator before = *this;
            --*this;
            return before;
        }
        friend bool operator==(const Iterator& a, const Iterator& b) { return a.m_pair == b.m_pair; }

    private:
        friend class KxParameters;
        Iterator(const Pair* pair, const std::uint32_t* gap) : m_pair(pair), m_gap(gap) {}

        const Pair* m_pair = nullptr;
        const std::uint32_t* m_gap = nullptr; // the gap length at the pair's place; null in a list without an index
    };

    KxParameters() {}
    KxParameters(const KxParameters& other);
    KxParameters& operator=(const KxParameters& other);
    ~KxParameters() override;

    std::uint32_t Release(bool destroy) override {
        if (destroy && count() == 1) {
            destroySelf();
            return 0;
        }
        return releaseShared(destroy);
    }

    [[nodiscard]] KxParameters* clone() const override { return new KxParameters(*this); }
    /** Compares the written forms. */
    int compareWith(const KxObject& other) const override;
    std::uint32_t hashCode() const override;
    void display(KxOutputStream& out, bool verbose) const override;

    /** Adds the pairs of a text. Names and values are trimmed; quotes are kept. A ";" between quotes (which may contain
        backslash escapes) does not end a pair. A pair with neither name nor value is skipped. */
    void parse(std::string_view text) { parse(text, text.data() + text.size()); }
    /** As above; the bytes after the text, up to `readable`, may be loaded too. */
    void parse(std::string_view text, const char* readable);
    void parse(const char* text) { parse(text == nullptr ? std::string_view() : std::string_view(text)); }
    /** As above from a stream, up to an unquoted comma, a CR or a LF, which stays unread, or up to the end. */
    void parse(KxInputStream& in);
    /** As above, but every pair must have a name, and its value must be a quoted text, or text without quotes. Outside
        quotes, no name or value may contain white space, control characters, "<" or ">". Returns false for other text,
        which is not consumed then; the pairs before it have been added. */
    [[nodiscard]] bool parseExactly(KxInputStream& in);

    /** Writes the pairs in order, separated by ";". There is no ";" before the first pair. */
    void serialize(KxOutputStream& out) const;
    /** Writes the pairs in order, with ";" before each. */
    void serializeEach(KxOutputStream& out) const;
    KxString getString() const;

    /** The value; nil when the name is absent, empty when the name has no value. */
    KxString getValue(std::string_view name) const;
    /** As getValue, without a copy; null when the name is absent. Valid until the list changes. */
    [[nodiscard]] const KxString* findValue(std::string_view name) const;
    [[nodiscard]] bool isPresent(std::string_view name) const { return findValue(name) != nullptr; }
    /** Sets the value of a name, or adds the pair. A nil value changes nothing. */
    void setValue(std::string_view name, const KxString& value);
    /** As setValue for each pair. When there is no memory, none is set. */
    void setValues(std::initializer_list<Pair> values);
    /** Appends to the value of a name; returns false, without a change, when the name is absent. Many calls for one
        name cost as much as the text is long. */
    bool appendToValue(std::string_view name, std::string_view text);
    /** Returns false when the name is absent. */
    bool removeValue(std::string_view name);
    void clear();

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    /** Iteration in insertion order; valid until the list changes. */
    Iterator begin() const;
    Iterator end() const;

    void* operator new(std::size_t size);
    void operator delete(void* block, std::size_t size);

private:
    friend class KxSharedParameters;

    static constexpr std::uint32_t kInline = 2;
    struct Block;

    explicit KxParameters(Held held) : KxObject(held) {}
    /** An empty list with one reference. */
    static KxParameters* sCreateHeld();
    void destroySelf();

    Pair* pairs();
    const Pair* pairs() const { return const_cast<KxParameters*>(this)->pairs(); }
    bool hasIndex() const;
    std::uint32_t places() const;
    Pair* find(std::string_view name);
    [[gnu::noinline]] static Pair* findFrom(Pair* begin, Pair* end, std::string_view name);
    Pair* findIndexed(std::string_view name);
    /** What is read: all of a text, a stream up to the end of the list, or the same as exactly as possible. */
    enum class Reading { Text, Stream, Exact };
    [[gnu::noinline]] void serializeFrom(KxOutputStream& out, Iterator pair) const;
    static void write(KxOutputStream& out, const Pair& pair);
    /** Adds a pair, or sets the value of a name that is there; does nothing if both are empty. */
    void store(std::string_view name, std::string_view value);
    template <Reading kReading>
    static bool endsPair(char c) {
        return c == ';' || (kReading != Reading::Text && (c == '\r' || c == ',' || c == '\n'));
    }
    template <Reading kReading>
    const char* parsePairs(const char* begin, const char* end, const char* readable);
    template <Reading kReading>
    const char* parseUnusualPair(const char* begin, const char* end, const char* readable);
    void append(KxString&& name, KxString&& value);
    void appendToLong(KxString&& name, KxString&& value);
    std::uint32_t capacity() const;
    void makeRoom();
    void closeGaps();
    void grow();
    void releaseAll();
    [[gnu::noinline]] void releaseBlock();

    std::uint32_t m_size = 0;
    Block* m_block = nullptr; // holds all pairs when they are more than fit here
    union {
        Pair m_inline[kInline];
    };
};
