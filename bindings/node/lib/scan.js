'use strict';

// Starts a worker for a scan, and ends the scanner when the program does not want to wait any longer.

const fs = require('node:fs');
const path = require('node:path');
const { Worker } = require('node:worker_threads');

const { ZavError } = require('./errors.js');

// How long a scanner has between the polite signal and the other one.
const GRACE = 2000;
const ROUND = 50;

const running = new Set();

/** What the scan of the worker found. `signal` ends it; `log` receives messages. */
function scan(workerData, { signal, timeout, log }) {
  signal?.throwIfAborted();
  return new Promise((resolve, reject) => {
    const worker = new Worker(path.join(__dirname, 'worker.js'), { workerData, name: 'zav-scan' });
    const state = { thread: null };
    let rounds = null;
    let timer = null;

    // The first outcome counts; it is passed on when the thread has ended.
    let outcome = null;
    const finishWith = (one) => {
      outcome ??= one;
    };
    const end = (reason) => {
      finishWith(() => reject(reason));
      if (rounds) return;
      const start = Date.now();
      const signalScanners = () => kill(state.thread, Date.now() - start < GRACE ? 'SIGTERM' : 'SIGKILL');
      rounds = setInterval(signalScanners, ROUND);
      signalScanners();
    };
    const aborted = () => end(signal.reason);

    if (signal) signal.addEventListener('abort', aborted, { once: true });
    if (timeout !== undefined) {
      timer = setTimeout(() => end(new DOMException(`the scan took longer than ${timeout} ms`, 'TimeoutError')), timeout);
    }
    running.add(state);
    if (running.size === 1) process.on('exit', endAll);

    worker.on('message', (message) => {
      if (message.thread) state.thread = message.thread;
      else if (message.log) log?.(message.log);
      else if (message.found) finishWith(() => resolve(message.found));
      else if (message.failure) finishWith(() => reject(new ZavError(message.failure.code, message.failure.reasons)));
      else finishWith(() => reject(new Error(message.error)));
    });
    worker.on('error', (error) => finishWith(() => reject(error)));
    worker.on('exit', () => {
      clearTimeout(timer);
      clearInterval(rounds);
      signal?.removeEventListener('abort', aborted);
      running.delete(state);
      if (running.size === 0) process.off('exit', endAll);
      finishWith(() => reject(new Error('the thread of the scan has ended without a result')));
      outcome();
    });
  });
}

// Without it, process.exit() would wait for the end of the scans.
function endAll() {
  for (const { thread } of running) kill(thread, 'SIGKILL');
}

// Signals the processes that the library started for this thread. The thread's child is the library's own, which waits for the
// scanner; the scanner and its children are below it.
function kill(thread, signal) {
  if (thread === null) return;
  const processes = childrenOf(thread).flatMap((keeper) => childrenOf(`${keeper}/task/${keeper}`));
  for (const one of processes) processes.push(...childrenOf(`${one}/task/${one}`));
  for (const one of processes) {
    try {
      process.kill(one, signal);
    } catch {
      // It has ended.
    }
  }
}

function childrenOf(thread) {
  try {
    return fs.readFileSync(`/proc/${thread}/children`, 'ascii').split(' ').filter(Boolean).map(Number);
  } catch {
    return [];
  }
}

module.exports = { scan };
