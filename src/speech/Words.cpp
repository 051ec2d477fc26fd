#include "speech/Words.h"

#include "core/base/Rounding.h"
#include "core/base/Text.h"

namespace morvelin {

namespace {

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

/// The bytes of the character at `at`.
std::size_t lengthAt(std::string_view text, std::size_t at) {
    std::size_t end = at + 1;
    while (end < text.size() && continuesCharacter(text[end])) ++end;
    return end - at;
}

bool isSpace(std::string_view character) {
    const char first = character.front();
    if (character.size() == 1) return first == ' ' || (first >= '\t' && first <= '\r');
    return trimmed(character).empty();
}

} // namespace

std::vector<std::string> wordsIn(std::string_view text) {
    std::vector<std::string> words;
    bool isOpen = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view character = text.substr(at, lengthAt(text, at));
        at += character.size();
        if (isSpace(character)) {
            isOpen = false;
            continue;
        }
        if (!isOpen) words.emplace_back();
        isOpen = true;
        words.back() += character;
    }
    return words;
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); at += lengthAt(text, at)) ++count;
    return count;
}

TranscriptWord rounded(TranscriptWord word) {
    word.t = SourceTime(roundedTo3Decimals(word.t));
    word.endT = SourceTime(roundedTo3Decimals(word.endT));
    word.confidence = roundedTo3Decimals(word.confidence);
    return word;
}

double meanConfidence(const std::vector<TranscriptWord>& words) {
    if (words.empty()) return 1;
    double sum = 0;
    for (const TranscriptWord& word : words) sum += word.confidence;
    return sum / static_cast<double>(words.size());
}

} // namespace morvelin
