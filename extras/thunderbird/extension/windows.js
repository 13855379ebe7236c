// Thunderbird's own windows.

// At the start the native program may be faster than the first window.
const LOOKS = 20;
const PAUSE_MS = 250;

// Minimizes all windows, once there are any.
export async function hideAll({api, sleep}) {
  for (let look = 0; look < LOOKS; ++look) {
    const windows = await api.windows.getAll();
    if (windows.length > 0) {
      await Promise.all(windows.map(({id}) => api.windows.update(id, {state: "minimized"})));
      return;
    }
    await sleep(PAUSE_MS);
  }
}

// Closes all windows; with the last one Thunderbird ends.
export async function closeAll({api}) {
  const windows = await api.windows.getAll();
  await Promise.all(windows.map(({id}) => api.windows.remove(id)));
}
