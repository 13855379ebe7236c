// The options page: shows what is set, and asks the background page for everything.
const element = (id) => document.getElementById(id);
const ask = (message) => messenger.runtime.sendMessage(message);

async function show() {
  const {move, header} = await ask({ask: "settings"});
  element("state").textContent = move ? "Spam is moved." : "Spam is not moved.";
  element("header").value = header;
}

// Runs the action of a button, and tells what became of it.
async function tell(action) {
  try {
    element("result").textContent = await action();
  } catch (error) {
    element("result").textContent = error.message;
  }
}

element("save").addEventListener("click", () =>
  tell(async () => {
    await ask({ask: "setHeader", header: element("header").value.trim()});
    return "Saved.";
  })
);
element("old").addEventListener("click", () =>
  tell(async () => `Messages moved: ${await ask({ask: "moveOld"})}.`)
);
show();
