// An agent makes a video alone: it looks, records, clicks and types with pauses for thought, edits, exports, and reads
// back what the video holds. The video is decoded to see whether that is so.
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { existsSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, describe, it } from "node:test";

import { Desktop, pause, until } from "./desktop.mjs";
import { Program } from "./program.mjs";

const kFrame = 1 / 60;
const kColours = [[0x20, 0x20, 0x20], [0xc0, 0x30, 0x30], [0x30, 0xa0, 0x40], [0x30, 0x50, 0xd0], [0xc0, 0xa0, 0x20]];

/** The colour of the painter in each frame of a video, as an index into `kColours`. */
function coloursOf(video) {
    const [width, height] = [64, 36];
    const words = ["-v", "error", "-i", video, "-vf", `fps=60,scale=${width}:${height}:flags=area`, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"];
    const { stdout, status } = spawnSync("ffmpeg", words, { maxBuffer: 1 << 28 });
    assert.equal(status, 0);
    const bytes = width * height * 3;
    const frames = [];
    for (let start = 0; start + bytes <= stdout.length; start += bytes) {
        const votes = kColours.map(() => 0);
        for (let at = start; at < start + bytes; at += 3) {
            const isNear = (colour) => colour.every((value, i) => Math.abs(value - stdout[at + i]) < 24);
            const seen = kColours.findIndex(isNear);
            if (seen >= 0) votes[seen]++;
        }
        frames.push(votes.indexOf(Math.max(...votes)));
    }
    return frames;
}

describe("an agent at the controls", () => {
    const program = new Program();
    const desktop = new Desktop();
    const agents = [];

    const connect = async (name = "Demo agent") => {
        const connection = program.client(name);
        await connection.connected;
        agents.push(connection.client);
        return connection;
    };
    const call = (client, name, args = {}) => client.callTool({ name, arguments: args });
    const facts = async (client, name, args) => {
        const result = await call(client, name, args);
        assert.equal(result.isError, false, `${name}: ${result.content.at(-1).text}`);
        return result.structuredContent;
    };

    before(async () => {
        await desktop.open();
        program.environment.DISPLAY = desktop.display;
        assert.equal(program.run("clients", "allow", "Demo agent").status, 0);
        await program.serve();
    });

    after(async () => {
        for (const client of agents) await client.close();
        await program.stop();
        await desktop.close();
    });

    it("makes a video whose thinking is cut and whose clicks are where they are said to be", async () => {
        const { client } = await connect();
        const status = await facts(client, "recording_status");
        assert.deepEqual([status.recording, status.can_control_pointer, status.can_capture_screen], [false, true, true]);
        assert.deepEqual([status.displays[0].width, status.displays[0].height], [1280, 720]);
        const shot = await call(client, "screenshot");
        const png = Buffer.from(shot.content[0].data, "base64");
        assert.deepEqual([png.readUInt32BE(16), png.readUInt32BE(20)], [1280, 720]);
        assert.match(shot.content[1].text, /^1280×720 screenshot of screen\. Positions are normalized 0–1 from the top-left of this image\.$/);

        const started = await facts(client, "start_recording");
        assert.deepEqual([started.recording, started.agent_driven, started.source, started.paced], [true, true, "display", true]);
        let acting = 0; // seconds in which something was done
        let thoughts = 1;
        const act = async (name, args) => {
            const begun = Date.now();
            const result = await facts(client, name, args);
            acting += (Date.now() - begun) / 1000;
            return result;
        };
        const think = async (seconds) => {
            thoughts++;
            await pause(seconds);
        };
        await act("wait", { seconds: 0.5 });
        await think(1.2);
        assert.deepEqual(await act("click", { x: 0.3, y: 0.4 }), { clicked: "left", count: 1, x: 0.3, y: 0.4, space: "the recorded area" });
        await think(1.5);
        assert.equal((await facts(client, "narrate", { text: "Now the second colour." })).pending, true);
        await act("type", { text: "né 日本 👍🏽!", delay: 0.02 });
        await act("press_key", { key: "cmd+c" });
        await think(1);
        assert.match((await call(client, "screenshot")).content[1].text, /^1280×720 screenshot of the recorded area\. .*, which is the area being recorded\.$/);
        await act("click", { x: "0.7", y: 0.6 });
        await act("wait", { seconds: 0.6 });
        await think(1.4);
        const stopped = await facts(client, "stop_recording");
        await until(`all keys after ${JSON.stringify(desktop.typed())}`, () => desktop.typed().endsWith("\x03"));
        assert.equal(desktop.typed(), "né 日本 👍🏽!\x03");
        assert.equal(stopped.narration_lines, 1);
        assert.ok(stopped.idle_spans_removed >= 3, `${stopped.idle_spans_removed} idle spans`);
        assert.ok(stopped.duration < acting + 0.6 * thoughts, `${stopped.duration} s of video for ${acting} s of actions`);
        assert.ok(stopped.duration > acting, `${stopped.duration} s of video for ${acting} s of actions`);
        assert.equal(JSON.parse(readFileSync(join(stopped.project, "capture.json"))).recordingKind, "agent");

        const project = await facts(client, "describe_project");
        assert.equal(project.clicks, 2);
        assert.equal(project.narration.length, 1);
        assert.ok(project.zooms.some((zoom) => zoom.factor > 1), "the clicks made a zoom");
        const [first, second] = project.click_landmarks;
        for (const [click, x, y] of [[first, 0.3, 0.4], [second, 0.7, 0.6]])
            assert.ok(Math.hypot(click.x - x, click.y - y) < 0.002, JSON.stringify(click));
        await facts(client, "annotate", { type: "focus", at: 0.1, until: 0.4, rect: { x: 0.2, y: 0.3, width: 0.2, height: 0.2 }, label: "the painter" });

        const exported = await facts(client, "export", { quality: "low" });
        for (const path of [exported.video, exported.events, exported.transcript]) assert.ok(existsSync(path), path);
        const sidecar = await facts(client, "read_events", { path: exported.video });
        const clicks = sidecar.events.filter((event) => event.type === "click");
        assert.equal(clicks.length, 2);
        assert.ok(sidecar.events.some((event) => event.type === "focus" && event.target.label === "the painter"));

        const frames = coloursOf(exported.video);
        assert.ok(Math.abs(frames.length * kFrame - sidecar.video.duration) < 0.1);
        const changes = frames.flatMap((colour, frame) => (frame > 0 && colour !== frames[frame - 1] ? [{ colour, at: frame * kFrame }] : []));
        assert.deepEqual(changes.map(({ colour }) => colour), [1, 2], "one new colour for each click");
        changes.forEach(({ at }, i) => {
            const late = at - clicks[i].t;
            console.log(`click ${i + 1} at ${clicks[i].t} s, its colour ${(late * 1000).toFixed(0)} ms later`);
            assert.ok(late > -1 / sidecar.video.fps && late < 2 / sidecar.video.fps, `click at ${clicks[i].t}, its colour at ${at}`);
        });
        const gap = changes[1].at - changes[0].at;
        assert.ok(gap < acting + 0.6 * 3, `${gap} s between the colours`);
    });

    it("lets nothing stay pressed when a client is killed in the middle of a drag", async () => {
        const before = desktop.buttons().length;
        const { client, transport } = await connect();
        const dragging = call(client, "drag", { from_x: 0.2, from_y: 0.2, to_x: 0.8, to_y: 0.8, duration: 1 }).catch(() => {});
        await until("the press", () => desktop.buttons().length > before);
        process.kill(transport.pid, "SIGKILL");
        await dragging;
        await until("the release", () => desktop.buttons().length > before + 1);
        assert.deepEqual(desktop.buttons().slice(before).map(({ what }) => what), ["press", "release"]);
    });

    it("goes on with a take whose agent has gone, and another one stops it", async () => {
        const first = await connect();
        await facts(first.client, "start_recording", { source: "window", window_title: "paint" });
        await first.client.close();
        const { client } = await connect();
        assert.match((await call(client, "start_recording")).content[0].text, /^A recording is already in progress\. Call stop_recording first\.$/);
        const before = desktop.buttons().length;
        const begun = Date.now();
        await facts(client, "click", { x: 0.5, y: 0.5 });
        const presses = await until("the click", () => desktop.buttons().length > before + 1 && desktop.buttons().slice(before));
        console.log(`a click was seen ${(presses[0].at - begun).toFixed(0)} ms after the call`);
        const stopped = await facts(client, "stop_recording");
        assert.ok(existsSync(join(stopped.project, "recording.mov")));
        assert.equal((await call(client, "stop_recording")).content[0].text, "No recording is in progress.");
        assert.equal((await call(client, "start_recording", { source: "window", window_title: "nowhere" })).content[0].text,
            "No on-screen window matches “nowhere”. Windows without a title bar are not listed.");
    });

    it("finishes a take before it ends", async () => {
        const { client } = await connect();
        await facts(client, "start_recording", { source: "area", rect: { x: 100, y: 100, width: 400, height: 300 } });
        const projects = (await facts(client, "list_projects")).projects.length;
        await facts(client, "wait", { seconds: 0.5 });
        program.server.kill("SIGINT");
        await until("the program's end", () => program.server.exitCode !== null);
        assert.equal(program.server.exitCode, 0);
        assert.match(program.log, /The recording is saved as .*\.morvelin/);
        const listed = JSON.parse(program.run("call", "list_projects").stdout).projects;
        assert.equal(listed.length, projects + 1);
    });
});

describe("a take whose display goes away", () => {
    it("becomes a project with what was narrated, and the agent is told", async () => {
        const [program, desktop] = [new Program(), new Desktop()];
        await desktop.openScreen();
        program.environment.DISPLAY = desktop.display;
        program.run("clients", "allow", "Demo agent");
        await program.serve();
        const { client, connected } = program.client("Demo agent");
        await connected;
        const call = async (name, args = {}) => (await client.callTool({ name, arguments: args })).structuredContent;
        await call("start_recording", { pace_to_actions: false });
        await call("wait", { seconds: 0.6 });
        await call("narrate", { text: "So far.", duration: 0.2 });
        await call("wait", { seconds: 0.4 });
        desktop.screen.kill("SIGKILL");
        const status = await until("the take's end", async () => (await call("recording_status")).ended_by_itself && (await call("recording_status")));
        assert.deepEqual([status.recording, status.can_control_pointer, status.can_capture_screen], [false, false, false]);
        assert.match(status.ended_by_itself.reason, /^The screen capture ended before Stop was pressed: /);
        const { project } = status.ended_by_itself;
        await until("the line", () => existsSync(join(project, "transcript.json")));
        assert.match((await client.callTool({ name: "click", arguments: { x: 0.5, y: 0.5 } })).content[0].text, /has gone away/);
        await client.close();
        await program.stop();
        await desktop.close();
    });
});
