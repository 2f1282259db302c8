export default createLibrary;
