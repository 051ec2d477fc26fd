// One session of an agent turns a raw take into a finished edit, over the socket; the files are read back afterwards.
import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, describe, it } from "node:test";

import { Program } from "./program.mjs";

describe("an agent that edits", () => {
    const program = new Program();
    let client;
    let bundle;

    const facts = async (name, args) => {
        const result = await client.callTool({ name, arguments: { project: bundle, ...args } });
        assert.equal(result.isError, false, `${name}: ${result.content[0].text}`);
        return result.structuredContent;
    };
    const savedEdit = () => {
        const capture = JSON.parse(readFileSync(join(bundle, "capture.json")));
        return JSON.parse(readFileSync(join(bundle, "versions", `${capture.currentVersionID}.json`))).edit;
    };

    before(async () => {
        bundle = program.addProject("Raw take");
        assert.equal(program.run("clients", "allow", "Editor agent").status, 0);
        await program.serve();
        const connection = program.client("Editor agent");
        client = connection.client;
        await connection.connected;
    });

    after(async () => {
        await client?.close();
        assert.equal(await program.stop(), 0);
    });

    it("makes a finished edit", async () => {
        const original = readFileSync(join(bundle, "cursorEvents.json"));
        assert.equal((await facts("trim", { start: 1, end: 9.5 })).duration, 8.5);
        assert.equal((await facts("cut", { from: 2, to: 3 })).duration, 7.5);
        assert.equal((await facts("set_speed", { from: 6.5, to: 7.5, speed: 2 })).duration, 7);

        const { zooms } = await facts("describe_project");
        const zoomIns = zooms.filter((zoom) => zoom.factor > 1);
        assert.ok(zoomIns.length >= 1, "the clicks have made zooms");
        for (const zoom of zoomIns.slice(0, 2)) {
            const aimed = await facts("update_zoom", { id: zoom.id, x: 0.6, y: 0.45 });
            assert.deepEqual([aimed.x, aimed.y], [0.6, 0.45]);
        }
        const focus = await facts("annotate", {
            type: "focus", at: 1, rect: { x: 0.5, y: 0.4, width: 0.2, height: 0.1 }, label: "the Export button", target_kind: "button",
        });
        const mask = await facts("annotate", { type: "mask", at: 0, rect: { x: 0, y: 0, width: 0.3, height: 0.05 } });
        assert.equal(mask.until, 7);
        const line = await facts("narrate", { text: "This is where the export begins.", at: 1 });
        assert.equal(line.segments, 1);
        await facts("set_style", { background: "palette-lagoon", padding: 0.08, corner_radius: 0.02 });

        const project = await facts("describe_project");
        assert.equal(project.duration, 7);
        assert.equal(project.original_duration, 10);
        assert.deepEqual(project.annotations.map(({ id }) => id), [mask.id, focus.id]);
        assert.equal(project.narration[0].text, "This is where the export begins.");
        assert.equal(project.narration[0].at, 1);
        assert.equal(project.style.background.name, "palette-lagoon");
        assert.equal(project.style.captions, true);

        const edit = savedEdit();
        assert.equal(edit.duration, 7);
        assert.equal(edit.padding, 0.08);
        assert.equal(edit.focusKeyframes[0].target.label, "the Export button");
        assert.equal(edit.captions.cues.length, 1);
        assert.equal(JSON.parse(readFileSync(join(bundle, "transcript.json"))).segments.length, 1);
        const lengths = edit.fragments.map((fragment) => (fragment.sourceEnd - fragment.sourceStart) / fragment.speed);
        assert.ok(Math.abs(lengths.reduce((a, b) => a + b) - 7) < 1e-9);
        assert.deepEqual(readFileSync(join(bundle, "cursorEvents.json")), original, "what the capture recorded never changes");
    });

    it("writes subtitles for the edited video", async () => {
        const { path } = await facts("export_captions", { format: "srt" });
        assert.match(readFileSync(path, "utf8"), /^1\n00:00:01,000 --> 00:00:0\d,\d{3}\nThis is where the export begins\.\n/);
    });

    it("keeps every step of two clients at once", async () => {
        const other = program.client("Editor agent");
        await other.connected;
        const add = (agent, at) => agent.callTool({ name: "annotate", arguments: { project: bundle, type: "tap", at, x: 0.5, y: 0.5 } });
        const before = savedEdit().tapTapKeyframes.length;
        const calls = [];
        for (let i = 0; i < 10; i++) calls.push(add(client, 2 + i / 10), add(other.client, 4 + i / 10));
        for (const result of await Promise.all(calls)) assert.equal(result.isError, false);
        assert.equal(savedEdit().tapTapKeyframes.length, before + 20);
        await other.client.close();
        assert.deepEqual(readdirSync(join(bundle, "versions")).filter((name) => !name.endsWith(".json")), [], "nothing temporary stays");
    });
});
