// Tools that put words over a recording: written lines and spoken takes.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> narrationTools() {
    return {
        tool("narrate", R"(
            Add a line of on-screen narration — captions only, no sound — and turn captions on.

            The text is written straight into the project's transcript. Nothing is spoken or recognized, so the
            burned-in captions and the `*.transcript.json` sidecar carry exactly the words given here. Use it to say
            what is happening in a recording that has no voice-over. For a voice you can hear, use
            `generate_narration` instead.

            **Narrate while you record.** Called during a take with no `at`, the line is stamped at the current
            moment in the recording and written when you stop. Say each line as you do the thing it describes and
            the timing is exact, for free.

            Narrating afterwards means working out timeline positions yourself, and estimating them from the order
            you did things in drifts badly, far enough by the middle of a two-minute video to put a caption over the
            wrong screen. If you must do it after the fact, get the times from `describe_project`'s
            `click_landmarks` rather than guessing.

            Call it once per line. Length is estimated from the text if `duration` is omitted.)",
             {project(), text("text", "What to say."),
              number("at", "When the line starts, in seconds on the edit timeline. Omit while recording to stamp it at "
                           "the current moment."),
              number("duration", "How long the line is on screen. Defaults to a natural reading pace.")},
             {"text"}),

        tool("clear_narration", R"(
            Remove every narration line `narrate` wrote (the project's transcript), so it can be rewritten from
            scratch. Captions stay enabled. Spoken narration takes are not touched.)",
             {project()}),

        tool("list_voices", R"(
            The ElevenLabs voices `generate_narration` can speak with, on the account the user connected in
            Morvelin's Settings › Voice: each voice's `id`, `name`, whether it is the user's `own` (cloned or
            designed) and a short description. Also the default voice and model, the models with their per-take
            character limits, the credits left this period when the key can read them, the most characters this
            agent may spend on one take, and whether this agent may generate narration at all.

            Costs nothing: listing voices spends no credits.)"),

        tool("generate_narration", R"(
            Speak a script with an ElevenLabs voice and lay it over the recording as its audio: a new narration
            take, on top of the version's audio tracks and the only one ticked, with captions written from the
            spoken words' exact timings. This is a voice-over you can hear. To put words on screen without sound,
            use `narrate`.

            **It spends the user's ElevenLabs credits**, about one per character on Multilingual v2, half that on
            Flash v2.5. So it only works once the user has turned it on for you in Settings › AI agents, and only up
            to the per-take limit they set there (`list_voices` reports both). Write the whole script, check it,
            then call once: every call is a new take and new spending. Earlier takes are kept, and
            `use_narration_take` switches back to one for free.

            On a recording with sound of its own the take **replaces all of it**: the recording's track is unticked
            (app sounds too), so that needs `replace_audio: true`, after asking the user; `use_narration_take` with
            `take: "original"` brings the original back. The take starts at `start` on the edit timeline and is not
            cut with the video, so make cuts and speed changes **before** generating: an edit made afterwards moves
            the video under the voice. Pace the script to the video: about 15 characters a second, and
            `describe_project`'s `click_landmarks` say when things happen on screen.

            Waits until the take is made, usually a few seconds; longer for long scripts. Captions are burned into
            an export only when they are on (`set_style`).)",
             {project(), text("script", "Exactly what the voice says."),
              text("voice", "A voice id or name from list_voices. Defaults to the user's default voice."),
              choice("model", {"eleven_multilingual_v2", "eleven_flash_v2_5"}, "Defaults to the user's default model."),
              number("start", "Where the voice starts, in seconds on the edit timeline. Defaults to 0."),
              flag("replace_captions", "Rewrite captions the user edited by hand from the new take's words. By default "
                                       "edited captions are kept."),
              flag("pace_to_captions",
                   "Speak the script one line per caption, each line starting where its caption does (the recording's "
                   "own captions when it has a voice). Write exactly one line per caption; start is ignored."),
              flag("replace_audio", "Required on a recording with sound of its own: the take goes on top alone, and "
                                    "the recording's track is unticked.")},
             {"script"}),

        tool("use_narration_take", R"(
            Make one of the project's narration takes the only audio track heard, with its captions: its track
            ticked, every other track unticked. Free, since the take already exists. `describe_project` lists the
            takes under `narration_takes` and the stack under `audio_tracks` (top first; where ticked tracks overlap
            the top one is heard); refer to a take by its `take` number or its `id`, or pass `"original"` to hear
            the recording's own sound alone, with the captions from its transcript.

            Captions the user edited by hand are kept unless `replace_captions` is true.)",
             {project(), text("take", "The take's number (\"2\"), its id, or \"original\"."),
              flag("replace_captions", "Rewrite captions edited by hand from this take's words.")},
             {"take"}),
    };
}

} // namespace morvelin::table
