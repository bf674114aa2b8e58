#!/usr/bin/env node
// A USP controller for the voice data model: connects to an MQTT broker, sends one message to the
// agent and prints its answer.
//
//   usp-controller.js [OPTIONS] get PATH...               every value: "PATH => VALUE"
//   usp-controller.js [OPTIONS] set PATH=VALUE...         one Set message, all of it or nothing
//   usp-controller.js [OPTIONS] operate 'PATH()' [ARG=VALUE...]
//                                      waits for the OperationComplete notification, prints its
//                                      output arguments "NAME => VALUE"
//   usp-controller.js [OPTIONS] subscribe PATH [COUNT]  a ValueChange subscription: prints
//                                      "subscribed", then "PATH => VALUE at MS" (milliseconds
//                                      since the epoch) for COUNT notifications (default 1)
// Options: --host H (127.0.0.1), --port N (1883), --agent ENDPOINT (the agent's endpoint id,
// "proto::tr104-agent"), --timeout S (30: for each answer or notification), --repeat N (get and
// set N times, the time of each on standard error: "time MS").
// A refused message prints "error CODE: MESSAGE" and, for each parameter named, "error CODE PATH:
// MESSAGE"; a parameter a Get asked for by name and did not get, "error PATH: no value ..."; exit
// status 1.  A connection that fails: exit status 2.
"use strict";

// The topics and the controller's endpoint id, as the agent's factory-reset file names them
// (agents/usp/factory-reset-mqtt.txt).
const CONTROLLER_ID = "proto::tr104-controller";
const CONTROLLER_TOPIC = "/usp/controller";
const AGENT_TOPIC = "/usp/agent";

const usage = () => {
    console.error("usage: usp-controller.js [--host H] [--port N] [--agent ID] [--timeout S] [--repeat N] " +
                  "get PATH... | set PATH=VALUE... | operate 'PATH()' [ARG=VALUE...] | subscribe PATH [COUNT]");
    process.exit(2);
};

const parseArgs = (argv) => {
    const opts = {host: "127.0.0.1", port: 1883, agent: "proto::tr104-agent", timeout: 30, repeat: 1};
    const numeric = new Set(["port", "timeout", "repeat"]);
    let i = 0;
    for (; i < argv.length && argv[i].startsWith("--"); i += 2) {
        const name = argv[i].slice(2);
        if (!(name in opts) || i + 1 >= argv.length) usage();
        opts[name] = numeric.has(name) ? Number(argv[i + 1]) : argv[i + 1];
        if (numeric.has(name) && !(opts[name] > 0)) usage();
    }
    if (i >= argv.length) usage();
    return [opts, argv[i], argv.slice(i + 1)];
};

// "PATH=VALUE" split at the first "=".
const pair = (text) => {
    const at = text.indexOf("=");
    if (at <= 0) usage();
    return [text.slice(0, at), text.slice(at + 1)];
};

// Rejects after S seconds: the agent may never answer.
const within = (seconds, what, promise) => {
    let timer;
    const timeout = new Promise((_, reject) => {
        timer = setTimeout(() => reject({errMsg: `no ${what} within ${seconds} s`}), seconds * 1000);
    });
    return Promise.race([promise, timeout]).finally(() => clearTimeout(timer));
};

// A refused message: its code and text, then each parameter the agent named.
const printError = (err) => {
    if (typeof err !== "object" || err === null || err instanceof Error) {
        console.log(`error: ${err instanceof Error ? err.message : err}`);
        return;
    }
    console.log(`error ${err.errCode || ""}: ${err.errMsg || JSON.stringify(err)}`);
    for (const param of err.paramErrs || []) {
        console.log(`error ${param.errCode} ${param.paramPath}: ${param.errMsg}`);
    }
};

const timed = async (opts, run) => {
    let result;
    for (let n = 0; n < opts.repeat; ++n) {
        const start = process.hrtime.bigint();
        result = await within(opts.timeout, "answer", run());
        if (opts.repeat > 1) console.error(`time ${(Number(process.hrtime.bigint() - start) / 1e6).toFixed(2)}`);
    }
    return result;
};

// Every value of a Get, one "PATH => VALUE" line each, in the agent's order.  The agent leaves
// out a parameter it could not read: a parameter asked for by its full path that has no value
// is an error.
const get = async (usp, opts, paths) => {
    const message = await timed(opts, () => usp.get(paths, {raw: true}));
    let failed = false;
    for (const requested of searchKey(message, "reqPathResults") || []) {
        if (requested.errCode) {
            console.log(`error ${requested.errCode} ${requested.requestedPath}: ${requested.errMsg}`);
            failed = true;
            continue;
        }
        let values = 0;
        for (const resolved of requested.resolvedPathResults || []) {
            for (const [name, value] of Object.entries(resolved.resultParams || {})) {
                console.log(`${resolved.resolvedPath}${name} => ${value}`);
                ++values;
            }
        }
        if (values === 0 && !requested.requestedPath.endsWith(".")) {
            console.log(`error ${requested.requestedPath}: no value (the agent could not read it)`);
            failed = true;
        }
    }
    return failed ? 1 : 0;
};

// One Set message: the parameters grouped by object, every one required and no partial success,
// so that a refused value leaves every other one as it was.
const set = async (usp, opts, args) => {
    const objects = new Map();
    for (const [path, value] of args.map(pair)) {
        const at = path.lastIndexOf(".") + 1;
        const object = path.slice(0, at);
        if (!objects.has(object)) objects.set(object, {allowPartial: false});
        objects.get(object)[path.slice(at)] = {required: true, value};
    }
    await timed(opts, () => usp.set([...objects.keys()], [...objects.values()]));
    for (const [path, value] of args.map(pair)) console.log(`${path} => ${value}`);
    return 0;
};

const operate = async (usp, opts, args) => {
    if (args.length < 1) usage();
    const input = Object.fromEntries(args.slice(1).map(pair));
    const [command, clear] = await within(opts.timeout, "subscription", usp.operate(args[0], {isAsync: true}));
    try {
        const output = await within(opts.timeout, "OperationComplete notification", command(input));
        const flat = (prefix, value) => typeof value === "object" && value !== null
            ? Object.entries(value).forEach(([k, v]) => flat(prefix ? `${prefix}.${k}` : k, v))
            : console.log(`${prefix} => ${value}`);
        flat("", output);
    } finally {
        await clear();
    }
    return 0;
};

const subscribe = async (usp, opts, args) => {
    if (args.length < 1 || args.length > 2) usage();
    const count = args.length > 1 ? Number(args[1]) : 1;
    let seen = 0;
    let done;
    const finished = new Promise((resolve) => { done = resolve; });
    const clear = await within(opts.timeout, "subscription",
        usp.subscribe({notif: "ValueChange", reference: args[0]}, (msg, full) => {
            const at = Date.now();
            const change = searchKey(full, "valueChange");
            if (change) console.log(`${change.paramPath} => ${change.paramValue} at ${at}`);
            else console.log(`${JSON.stringify(msg)} at ${at}`);
            if (++seen >= count) done();
        }));
    console.log("subscribed");
    try {
        await within(opts.timeout, "ValueChange notification", finished);
    } finally {
        await clear();
    }
    return 0;
};

// The first value named `key` anywhere in a decoded message.
const searchKey = (object, key) => {
    if (typeof object !== "object" || object === null) return null;
    if (key in object) return object[key];
    for (const value of Object.values(object)) {
        const found = searchKey(value, key);
        if (found) return found;
    }
    return null;
};

const main = async () => {
    const [opts, command, args] = parseArgs(process.argv.slice(2));
    const commands = {get, set, operate, subscribe};
    if (!(command in commands) || args.length === 0) usage();
    let connect;
    try {
        connect = require("usp-js").default;
    } catch (err) {
        console.error("usp-controller: the usp-js library is not installed: npm install usp-js@0.5.1 " +
                      "(scripts/usp-controller-check.sh installs it into the build folder)");
        return 2;
    }
    let usp;
    try {
        usp = await connect({
            host: opts.host, port: opts.port, protocol: "mqtt", username: "", password: "",
            fromId: CONTROLLER_ID, toId: opts.agent, clientId: `tr104-controller-${process.pid}`,
            publishEndpoint: AGENT_TOPIC,
            // With MQTT 3.1.1 the agent answers on "<controller topic>/reply-to=<its topic>".
            subscribeEndpoint: `${CONTROLLER_TOPIC}/#`,
            closeOnDisconnect: true, connectTimeout: opts.timeout * 1000,
        });
    } catch (err) {
        const why = err.message || JSON.stringify(err);
        console.error(`usp-controller: no connection to the broker at ${opts.host}:${opts.port}: ${why}`);
        return 2;
    }
    try {
        return await commands[command](usp, opts, args);
    } catch (err) {
        printError(err);
        return 1;
    } finally {
        await usp.disconnect();
    }
};

main().then((status) => process.exit(status));
