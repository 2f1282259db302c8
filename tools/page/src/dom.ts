/// Elements in one expression: `h("button", { class: "quiet", onclick }, "Open")`.

type Child = Node | string | number | null | undefined | false;
type Props = Record<string, unknown>;

function setProperty(element: Element, name: string, value: unknown): void {
    if (value === undefined || value === null || value === false) return;
    if (name.startsWith('on') && typeof value === 'function') {
        element.addEventListener(name.slice(2), value as EventListener);
    } else if (name === 'value' || name === 'checked' || name === 'selected') {
        Object.assign(element, { [name]: value });
    } else {
        element.setAttribute(name, value === true ? '' : String(value));
    }
}

function append(parent: Element, children: Child[]): void {
    for (const child of children) {
        if (child !== null && child !== undefined && child !== false)
            parent.append(child instanceof Node ? child : String(child));
    }
}

export function h<K extends keyof HTMLElementTagNameMap>(
    tag: K,
    props: Props = {},
    ...children: Child[]
): HTMLElementTagNameMap[K] {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(props)) setProperty(element, name, value);
    append(element, children);
    return element;
}

/// Sets the text only when it differs: screen readers announce what is written, not what has changed.
export function setText(element: Element, text: string): void {
    if (element.textContent !== text) element.textContent = text;
}

export function replace(parent: Element, ...children: Child[]): void {
    parent.replaceChildren();
    append(parent, children);
}

let lastId = 0;

/// An id for a label or a description to refer to.
export function freshId(stem: string): string {
    lastId += 1;
    return `${stem}-${lastId}`;
}
