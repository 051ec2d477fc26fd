// A virtual desktop with a window manager and a terminal that changes its colour with each click and notes what it reads.
import { spawn, spawnSync } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));

export const pause = (seconds) => new Promise((resolve) => setTimeout(resolve, seconds * 1000));

/** Waits until `isDone` gives something, and gives it. */
export async function until(what, isDone, seconds = 20) {
    for (const end = Date.now() + seconds * 1000; Date.now() < end; await pause(0.02)) {
        const value = await isDone();
        if (value) return value;
    }
    throw new Error(`waited in vain for ${what}`);
}

export class Desktop {
    constructor() {
        this.folder = mkdtempSync(join(tmpdir(), "morvelin-desktop-"));
        this.processes = [];
    }

    async open() {
        await this.openScreen();
        this.start("openbox", ["--sm-disable"]);
        await until("the window manager", () => /window id/.test(this.ask("xprop", "-root", "_NET_SUPPORTING_WM_CHECK")));
        await this.openTerminal();
    }

    async openScreen() {
        const words = ["-displayfd", "3", "-screen", "0", "1280x720x24", "-nolisten", "tcp", "-noreset"];
        this.screen = this.start("Xvfb", words, ["ignore", "ignore", "ignore", "pipe"]);
        let number = "";
        this.screen.stdio[3].on("data", (bytes) => (number += bytes));
        this.display = await until("the X server", () => number.endsWith("\n") && `:${number.trim()}`);
    }

    async openTerminal() {
        const words = ["-u8", "-title", "Painter", "-geometry", "206x54+0+0", "-bg", "#202020", "-fg", "#202020", "-cr", "#202020"];
        this.terminal = this.start("xterm", [...words, "-e", "bash", join(here, "painter.sh"), this.folder]);
        await until("the terminal", () => existsSync(join(this.folder, "ready")) && /IsViewable/.test(this.ask("xwininfo", "-name", "Painter")));
        await pause(0.2);
    }

    /** What a program that asks the X server answers. */
    ask(program, ...words) {
        return spawnSync(program, ["-display", this.display, ...words], { encoding: "utf8" }).stdout;
    }

    start(program, words, stdio = "ignore") {
        const environment = { ...process.env, DISPLAY: this.display, LC_ALL: "C.UTF-8", HOME: this.folder };
        const child = spawn(program, words, { env: environment, stdio });
        this.processes.push(child);
        return child;
    }

    /** What the terminal has read that was no click. */
    typed() {
        return existsSync(join(this.folder, "typed")) ? readFileSync(join(this.folder, "typed"), "utf8") : "";
    }
    /** The presses and releases of buttons that the terminal has seen, each with its time in milliseconds. */
    buttons() {
        if (!existsSync(join(this.folder, "buttons"))) return [];
        const lines = readFileSync(join(this.folder, "buttons"), "utf8").trim().split("\n");
        return lines.map((line) => ({ what: line.split(" ")[0], at: Number(line.split(" ")[1].replace(",", ".")) * 1000 }));
    }

    async close() {
        for (const child of this.processes.reverse()) {
            if (child.exitCode !== null || child.signalCode !== null) continue;
            const ended = new Promise((resolve) => child.once("exit", resolve));
            child.kill("SIGKILL");
            await ended;
        }
        rmSync(this.folder, { recursive: true, force: true });
    }
}
