// The program under test, with a home folder of its own: serves, answers for the user, and has projects to show.
import { spawn, spawnSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";

const build = process.env.MORVELIN_BUILD;
if (!build) throw new Error("MORVELIN_BUILD has to name the build folder.");

export class Program {
    constructor() {
        this.home = mkdtempSync(join(tmpdir(), "morvelin-e2e-"));
        this.projects = join(this.home, "Movies", "Morvelin", "Projects");
        this.exports = join(this.home, "Movies", "Morvelin", "Exports");
        this.environment = { PATH: process.env.PATH, HOME: this.home, NO_COLOR: "1" };
        this.log = "";
    }

    /** Starts `morvelin serve`; ready once its log has the line. */
    async serve() {
        this.server = spawn(join(build, "morvelin"), ["serve"], { env: this.environment, stdio: ["ignore", "pipe", "inherit"] });
        this.server.stdout.on("data", (bytes) => (this.log += bytes));
        await this.logged(/MCP server listening at .*mcp\.sock/);
    }

    async logged(pattern) {
        for (let tries = 0; tries < 500; tries++) {
            if (pattern.test(this.log)) return;
            await new Promise((resolve) => setTimeout(resolve, 10));
        }
        throw new Error(`never logged ${pattern}; the log is:\n${this.log}`);
    }

    /** Runs a command of the program to its end. */
    run(...words) {
        const { status, stdout, stderr } = spawnSync(join(build, "morvelin"), words, { env: this.environment, encoding: "utf8" });
        return { status, stdout, stderr };
    }

    /** A client whose messages go through the relay; `client.connect` has to be awaited. */
    client(name) {
        const client = new Client({ name, version: "2.1" });
        const transport = new StdioClientTransport({ command: join(build, "morvelin-mcp"), env: this.environment, stderr: "pipe" });
        return { client, connected: client.connect(transport), transport };
    }

    /** A take of ten seconds with three clicks, as the recorder leaves it but for its versions. */
    addProject(name) {
        const bundle = join(this.projects, `${name}.morvelin`);
        mkdirSync(bundle, { recursive: true });
        const events = [];
        for (let tick = 0; tick < 300; tick++) {
            const at = { timestamp: tick / 30, x: 0.2 + tick / 600, y: 0.4 };
            events.push({ ...at, event: "move" });
            if (tick % 90 !== 45) continue;
            events.push({ ...at, event: "mouseDown", button: "left", clickCount: 1 });
            events.push({ ...at, event: "mouseUp", button: "left", clickCount: 1 });
        }
        const capture = { version: 9, name, createdAt: "2026-03-01T10:00:00Z", originalDuration: 10, versionOrder: [] };
        writeFileSync(join(bundle, "recording.mov"), "");
        writeFileSync(join(bundle, "cursorEvents.json"), JSON.stringify(events));
        writeFileSync(join(bundle, "capture.json"), JSON.stringify(capture));
        return bundle;
    }

    async stop() {
        if (this.server && this.server.exitCode === null) {
            const ended = new Promise((resolve) => this.server.once("exit", resolve));
            this.server.kill("SIGINT");
            await ended;
        }
        rmSync(this.home, { recursive: true, force: true });
        return this.server?.exitCode;
    }
}
