// Exports that something comes in between: each ends whole or leaves nothing behind.
import assert from "node:assert/strict";
import { spawn, spawnSync } from "node:child_process";
import { existsSync, mkdirSync, readdirSync } from "node:fs";
import { join } from "node:path";
import { after, before, beforeEach, describe, it } from "node:test";

import { Program } from "./program.mjs";

describe("an export", () => {
    const program = new Program();
    const videos = () => (existsSync(program.exports) ? readdirSync(program.exports) : []);
    const workingFolders = () => videos().filter((name) => name.startsWith("Morvelin-Export-"));

    /** Starts a command; it is under way once an export has its working folder. */
    const start = async (...words) => {
        const child = spawn(join(process.env.MORVELIN_BUILD, "morvelin"), words, { env: program.environment, stdio: "ignore" });
        const ended = new Promise((resolve) => child.once("exit", (code, signal) => resolve(signal ?? code)));
        await until(() => workingFolders().length > 0);
        return { child, ended };
    };
    const until = async (isSo) => {
        for (let tries = 0; tries < 6000 && !isSo(); tries++) await new Promise((resolve) => setTimeout(resolve, 10));
        assert.ok(isSo(), `never: ${isSo}`);
    };

    before(() => {
        const bundle = program.addProject("Tour");
        const movie = ["-f", "lavfi", "-i", "testsrc2=s=1280x720:r=30:d=10", "-c:v", "libx264", "-preset", "ultrafast"];
        const made = spawnSync("ffmpeg", ["-v", "error", "-y", ...movie, join(bundle, "recording.mov")]);
        assert.equal(made.status, 0, String(made.stderr));
    });
    beforeEach(() => mkdirSync(program.exports, { recursive: true }));
    after(() => program.stop());

    it("that is killed leaves no half video, and the next one sweeps its folder", async () => {
        const { child, ended } = await start("export");
        child.kill("SIGKILL");
        assert.equal(await ended, "SIGKILL");
        assert.equal(videos().length, 1, "the working folder alone");
        const next = program.run("export", "--for-ai");
        assert.equal(next.status, 0, next.stderr);
        const [video, events, ...others] = next.stdout.trim().split("\n");
        assert.match(video, /-mp4-agent\.mp4$/);
        assert.match(events, /-mp4-agent\.events\.json$/);
        assert.deepEqual(others, []);
        assert.equal(videos().length, 2);
    });

    it("that is interrupted leaves nothing, also as an agent's tool without the program", async () => {
        const before = videos();
        for (const words of [["export", "--format", "gif"], ["call", "export"]]) {
            const { child, ended } = await start(...words);
            child.kill("SIGINT");
            assert.equal(await ended, 130, words.join(" "));
            assert.deepEqual(videos(), before);
        }
    });

    it("goes on when its client goes away, and ends with the program", async () => {
        await program.serve();
        const before = videos().length;
        const first = await start("call", "export", "format=gif");
        first.child.kill("SIGKILL");
        await until(() => videos().some((name) => name.endsWith(".gif")) && workingFolders().length === 0);
        assert.equal(videos().length, before + 2);

        const second = await start("call", "export");
        program.server.kill("SIGTERM");
        assert.equal(await second.ended, 1);
        await until(() => program.server.exitCode !== null);
        assert.equal(program.server.exitCode, 0);
        assert.equal(videos().length, before + 2, "the unfinished video is gone");
    });
});
