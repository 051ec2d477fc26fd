// An agent's client that nobody here wrote goes through the relay: it is approved, lists, calls, reads, and fails well.
import assert from "node:assert/strict";
import { existsSync, mkdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { text } from "node:stream/consumers";
import { after, before, describe, it } from "node:test";

import { Program } from "./program.mjs";

const kSocket = ["Library", "Application Support", "Morvelin", "mcp.sock"];

describe("an agent's client", () => {
    const program = new Program();
    let client;
    let bundle;

    const call = (name, args = {}) => client.callTool({ name, arguments: args });
    const facts = async (name, args) => {
        const result = await call(name, args);
        assert.equal(result.isError, false, result.content[0].text);
        assert.deepEqual(JSON.parse(result.content.at(-1).text), result.structuredContent);
        return result.structuredContent;
    };
    const refusal = async (name, args) => {
        const result = await call(name, args);
        assert.equal(result.isError, true);
        assert.equal(result.structuredContent, undefined);
        return result.content[0].text;
    };

    before(async () => {
        bundle = program.addProject("Harbour tour");
        await program.serve();
        const connection = program.client("Agent 7");
        client = connection.client;
        // The answer to `initialize` waits for the user's.
        await program.logged(/morvelin clients allow "Agent 7"/);
        assert.equal(program.run("clients", "allow", "Agent 7").status, 0);
        await connection.connected;
    });

    after(async () => {
        await client?.close();
        assert.equal(await program.stop(), 0);
        assert.equal(existsSync(join(program.home, ...kSocket)), false);
    });

    it("is told who serves it, and is remembered", async () => {
        assert.equal(client.getServerVersion().name, "morvelin");
        assert.deepEqual(client.getServerCapabilities(), { tools: {}, resources: {} });
        await client.ping();
        const again = program.client("AGENT 7");
        await again.connected;
        await again.client.close();
    });

    it("lists the whole catalogue", async () => {
        const { tools } = await client.listTools();
        assert.equal(tools.length, 55);
        assert.equal(tools[0].name, "start_recording");
        assert.equal(tools.at(-1).name, "read_events");
        for (const tool of tools) assert.equal(tool.inputSchema.type, "object", tool.name);
    });

    it("sees projects, whole and narrowed", async () => {
        const { projects, directory } = await facts("list_projects");
        assert.equal(directory, program.projects);
        assert.equal(projects[0].path, bundle);
        assert.equal(projects[0].duration, 10);
        const whole = await facts("describe_project");
        assert.equal(whole.clicks, 3);
        assert.equal(whole.window, undefined);
        assert.ok(whole.zooms.some((zoom) => zoom.factor > 1));
        const part = await facts("describe_project", { project: "Harbour tour", from: "4", until: 5 });
        assert.equal(part.click_landmarks.length, 1);
        assert.equal(part.window.totals.click_landmarks, 3);
    });

    it("manages versions and projects", async () => {
        const made = await facts("create_version", { name: "Short cut" });
        assert.equal(made.current, true);
        assert.match(await refusal("rename_version", { name: "version 1" }), /already exists in this project/);
        assert.match(await refusal("delete_version", { version: "Short cut" }), /being edited can’t be deleted/);
        await facts("switch_version", { version: "Version 1" });
        await facts("delete_version", { version: made.id });
        const { versions } = await facts("list_versions");
        assert.deepEqual(versions.map((version) => version.name), ["Original", "Version 1"]);
        const copy = await facts("duplicate_project", { project: bundle });
        const renamed = await facts("rename_project", { project: copy.path, name: "Second tour" });
        assert.ok(renamed.path.endsWith("/Second tour.morvelin"));
        await facts("delete_project", { project: renamed.path });
        assert.equal(existsSync(renamed.path), false);
    });

    it("reads resources", async () => {
        const { resources } = await client.listResources();
        assert.deepEqual(resources.map(({ uri }) => uri), ["morvelin://projects", "morvelin://project/Harbour%20tour"]);
        const { contents } = await client.readResource({ uri: resources[1].uri });
        assert.equal(JSON.parse(contents[0].text).clicks, 3);
        await assert.rejects(client.readResource({ uri: "morvelin://project/no%20such" }), /-32602.*Unknown resource/);
    });

    it("reads the events of an export", async () => {
        assert.equal(await refusal("read_events"), "Nothing has been exported yet. Call export first.");
        mkdirSync(program.exports, { recursive: true });
        writeFileSync(join(program.exports, "tour.events.json"), '{"format":"morvelin-events"}');
        assert.equal((await facts("read_events")).format, "morvelin-events");
        assert.equal((await facts("read_events", { path: "~/Movies/Morvelin/Exports/tour.mp4" })).format, "morvelin-events");
        assert.match(await refusal("read_events", { path: "/nowhere.mp4" }), /^No events sidecar next to “\/nowhere\.mp4”/);
    });

    it("is told plainly what it can't have", async () => {
        assert.equal(await refusal("teleport"), "Unknown tool “teleport”.");
        assert.equal(await refusal("describe_project", { project: "/none.morvelin" }), "No .morvelin project at “/none.morvelin”.");
        assert.match(await refusal("describe_project", { from: 3, until: 3 }), /from has to be before until/);
        assert.match(await refusal("delete_project", { project: " " }), /never falls back/);
        assert.match(await refusal("open_project"), /^Could not open the editor: /);
        assert.match(await refusal("start_recording"), /^Could not start recording: There is no X display/);
        assert.match(await refusal("click", { x: 0.5, y: 0.5 }), /^There is no X display/);
        assert.equal((await facts("recording_status")).recording, false);
        await assert.rejects(client.request({ method: "prompts/get" }, { parse: (x) => x }), /-32601/);
        await assert.rejects(client.setLoggingLevel("debug"), /./);
        assert.deepEqual((await client.listTools()).tools.length, 55);
    });

    it("shares the program with the command line", async () => {
        const { stdout, status } = program.run("call", "describe_project", "project=Harbour tour", "until=4.5");
        assert.equal(status, 0);
        assert.equal(JSON.parse(stdout).window.totals.click_landmarks, 3);
        const failed = program.run("call", "describe_project", "project=/none.morvelin");
        assert.deepEqual([failed.status, failed.stdout], [1, ""]);
        assert.equal(failed.stderr, "No .morvelin project at “/none.morvelin”.\n");
    });
});

describe("a client without the program", () => {
    it("is told so in an answer and on standard error", async () => {
        const program = new Program();
        const { connected, transport } = program.client("Agent 8");
        const complaint = text(transport.stderr);
        await assert.rejects(connected, /Morvelin/);
        await transport.close();
        assert.match(await complaint, /Morvelin/);
        await program.stop();
    });
});
