// The user's settings by name: every key of the defaults store, its type, and what it reads as before it is written.
#pragma once

#include "platform/Defaults.h"

namespace morvelin::defaults {

using Flag = DefaultsKey<bool>;
using Integer = DefaultsKey<std::int64_t>;
using Text = DefaultsKey<std::string>;
using Texts = DefaultsKey<Defaults::Texts>;

// The first run.
inline constexpr Flag kHasOnboarded{"hasOnboarded"};
inline constexpr Integer kOnboardingCurrentPage{"onboardingCurrentPage"}; ///< page to resume at
inline constexpr Flag kOnboardingRequestedScreenPrompt{"onboardingRequestedScreenPrompt"};
inline constexpr Flag kOnboardingRequestedAccessibilityPrompt{"onboardingRequestedAccessibilityPrompt"};
inline constexpr Flag kOnboardingRelaunchedForAccessibility{"onboardingRelaunchedForAccessibility"};
inline constexpr Flag kOnboardingMCPPageMigrationApplied{"onboardingMCPPageMigrationApplied"};
inline constexpr Flag kOnboardingAgentPageOrderMigrationApplied{"onboardingAgentPageOrderMigrationApplied"};

// Recording.
inline constexpr Flag kShowCursor{"showCursor"}; ///< draw the pointer in new takes
inline constexpr Flag kDimUnrecordedAreaDuringRecording{"dimUnrecordedAreaDuringRecording"};
inline constexpr Text kCameraPreviewFrameOrigin{"cameraPreviewFrameOrigin"}; ///< where its panel was left
inline constexpr Text kTakeEncoder{"takeEncoder"};               ///< the hardware encoder that works; empty: none
inline constexpr Text kProbedTakeEncoders{"probedTakeEncoders"}; ///< those among which that one was found

// Export.
inline constexpr Text kLastExportQuality{"lastExportQuality"};
inline constexpr Flag kFounderModeEnabled{"founderModeEnabled", true}; ///< write the sidecars beside an export

// Speech and voice.
inline constexpr Text kTranscriptLanguage{"transcriptLanguage", "auto"}; ///< a two-letter code
inline constexpr Text kElevenLabsDefaultVoiceID{"elevenLabsDefaultVoiceID"};
inline constexpr Text kElevenLabsDefaultModelID{"elevenLabsDefaultModelID", "eleven_multilingual_v2"};
inline constexpr Text kElevenLabsMode{"elevenLabsMode"};

// Agents. Client names are compared without regard to case.
inline constexpr Texts kMCPApprovedClients{"mcpApprovedClients"};
inline constexpr Texts kMCPNarrationClients{"mcpNarrationClients"};                 ///< may spend voice credits
inline constexpr Integer kMCPNarrationCharacterLimit{"mcpNarrationCharacterLimit"}; ///< of one call; 0 allows none

// Talk mode.
inline constexpr Flag kDisableTalkModeHotkey{"MorvelinDisableTalkModeHotkey"};
inline constexpr Flag kShareTalkModeOverlay{"MorvelinShareTalkModeOverlay"}; ///< the overlay may be captured

// The windows.
inline constexpr Text kLastAcknowledgedReleaseVersion{"lastAcknowledgedReleaseVersion"};
inline constexpr Text kEditorMode{"morvelin-editor-mode"}; ///< "advanced" or "simple"
inline constexpr Text kTheme{"morvelin-theme", "system"};  ///< "light", "system" or "dark"; any other is "system"

} // namespace morvelin::defaults
